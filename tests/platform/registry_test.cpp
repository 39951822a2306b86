// The file-backed registry: key and value semantics, the size rules of queries and enumerations,
// case-insensitive names, and bad arguments.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/registry_sandbox.h"

namespace {

using zetest::CreateKey;
using zetest::Key;
using zetest::SetString;

std::string QueryString(HKEY key, const char* name) {
    char buffer[512] = {};
    DWORD size = sizeof buffer;
    if (RegQueryValueExA(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(buffer), &size) != ERROR_SUCCESS)
        return "<missing>";
    return std::string(buffer, size).c_str();
}

class RegistryTest : public ::testing::Test {
protected:
    zetest::RegistrySandbox sandbox;
};

TEST_F(RegistryTest, CreateOpenSetAndQueryValuesOfEachType) {
    Key created, again, opened, missing;
    DWORD disposition = 0;
    ASSERT_EQ(ERROR_SUCCESS, CreateKey(HKEY_CURRENT_USER, "Software\\Ze\\Test", created, &disposition));
    EXPECT_EQ(REG_CREATED_NEW_KEY, disposition);
    ASSERT_EQ(ERROR_SUCCESS, CreateKey(HKEY_CURRENT_USER, "Software\\Ze\\Test", again, &disposition));
    EXPECT_EQ(REG_OPENED_EXISTING_KEY, disposition);

    ASSERT_EQ(ERROR_SUCCESS, SetString(created.get(), nullptr, "default text"));
    ASSERT_EQ(ERROR_SUCCESS, SetString(created.get(), "Name", "a \"quoted\" \\ path"));
    const DWORD number = 0xDEADBEEF;
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExA(created.get(), "Number", 0, REG_DWORD,
                                            reinterpret_cast<const BYTE*>(&number), sizeof number));
    const BYTE blob[] = {0, 1, 2, 0xFF, 0x80};
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExA(created.get(), "Blob", 0, REG_BINARY, blob, sizeof blob));

    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Ze\\Test", 0, KEY_READ, opened.out()));
    EXPECT_EQ("default text", QueryString(opened.get(), nullptr));
    EXPECT_EQ("default text", QueryString(opened.get(), ""));
    EXPECT_EQ("a \"quoted\" \\ path", QueryString(opened.get(), "Name"));
    DWORD type = 0;
    EXPECT_EQ((std::vector<BYTE>{0xEF, 0xBE, 0xAD, 0xDE}),
              zetest::QueryValue(HKEY_CURRENT_USER, "Software\\Ze\\Test", "Number", &type));
    EXPECT_EQ(REG_DWORD, type);
    EXPECT_EQ(std::vector<BYTE>(blob, blob + sizeof blob),
              zetest::QueryValue(HKEY_CURRENT_USER, "Software\\Ze\\Test", "Blob", &type));
    EXPECT_EQ(REG_BINARY, type);

    // Overwriting keeps one value of that name, with the new type.
    ASSERT_EQ(ERROR_SUCCESS, SetString(created.get(), "Number", "now text"));
    EXPECT_EQ("now text", QueryString(opened.get(), "Number"));
    DWORD subKeys = 0, values = 0;
    zetest::CountEntries(HKEY_CURRENT_USER, "Software\\Ze\\Test", &subKeys, &values);
    EXPECT_EQ(4u, values);

    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegQueryValueExA(opened.get(), "Absent", nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND,
              RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Ze\\Other", 0, KEY_READ, missing.out()));
}

TEST_F(RegistryTest, QuerySizeRulesFollowMoreData) {
    Key key;
    ASSERT_EQ(ERROR_SUCCESS, CreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Ze", key));
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "Text", "0123456789"));  // 11 bytes with the zero

    DWORD size = 0, type = 0;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExA(key.get(), "Text", nullptr, &type, nullptr, &size));
    EXPECT_EQ(11u, size);
    EXPECT_EQ(REG_SZ, type);
    char small[4], exact[11];
    size = sizeof small;
    EXPECT_EQ(ERROR_MORE_DATA,
              RegQueryValueExA(key.get(), "Text", nullptr, nullptr, reinterpret_cast<BYTE*>(small), &size));
    EXPECT_EQ(11u, size);
    size = sizeof exact;
    EXPECT_EQ(ERROR_SUCCESS,
              RegQueryValueExA(key.get(), "Text", nullptr, nullptr, reinterpret_cast<BYTE*>(exact), &size));
    EXPECT_EQ(11u, size);
    EXPECT_STREQ("0123456789", exact);

    // A buffer without a size is a caller error; neither buffer nor size only tells existence.
    EXPECT_EQ(ERROR_INVALID_PARAMETER,
              RegQueryValueExA(key.get(), "Text", nullptr, nullptr, reinterpret_cast<BYTE*>(exact), nullptr));
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExA(key.get(), "Text", nullptr, nullptr, nullptr, nullptr));
}

TEST_F(RegistryTest, NamesIgnoreCaseButKeepTheirSpelling) {
    Key key, lower, machine;
    ASSERT_EQ(ERROR_SUCCESS, CreateKey(HKEY_CLASSES_ROOT, "CLSID\\{ABCDEF}\\InprocServer32", key));
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "ThreadingModel", "Both"));
    DWORD disposition = 0;
    ASSERT_EQ(ERROR_SUCCESS, CreateKey(HKEY_CLASSES_ROOT, "clsid\\{abcdef}\\inprocserver32", lower, &disposition));
    EXPECT_EQ(REG_OPENED_EXISTING_KEY, disposition);
    EXPECT_EQ("Both", QueryString(lower.get(), "THREADINGMODEL"));
    ASSERT_EQ(ERROR_SUCCESS, SetString(lower.get(), "threadingmodel", "Apartment"));
    EXPECT_EQ("Apartment", QueryString(key.get(), "ThreadingModel"));

    // The classes root is HKEY_LOCAL_MACHINE\SOFTWARE\Classes, and the first spelling stays.
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_LOCAL_MACHINE, "software\\classes\\CLSID", 0, KEY_READ, machine.out()));
    char name[64];
    DWORD chars = sizeof name;
    ASSERT_EQ(ERROR_SUCCESS, RegEnumKeyExA(machine.get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
    EXPECT_STREQ("{ABCDEF}", name);
    chars = sizeof name;
    ASSERT_EQ(ERROR_SUCCESS, RegEnumValueA(key.get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
    EXPECT_STREQ("ThreadingModel", name);
}

TEST_F(RegistryTest, EnumerationOrderAndLimits) {
    Key key;
    ASSERT_EQ(ERROR_SUCCESS, CreateKey(HKEY_CURRENT_USER, "Enum", key));
    for (const char* child : {"beta", "Alpha", "gamma", "ALPHA2"}) {
        Key sub;
        ASSERT_EQ(ERROR_SUCCESS, CreateKey(key.get(), child, sub));
    }
    std::vector<std::string> names;
    char name[16];
    for (DWORD i = 0;; ++i) {
        DWORD chars = sizeof name;
        LONG err = RegEnumKeyExA(key.get(), i, name, &chars, nullptr, nullptr, nullptr, nullptr);
        if (err == ERROR_NO_MORE_ITEMS) break;
        ASSERT_EQ(ERROR_SUCCESS, err);
        EXPECT_EQ(strlen(name), chars);
        names.push_back(name);
    }
    // Subkeys come sorted without regard to case.
    EXPECT_EQ((std::vector<std::string>{"Alpha", "ALPHA2", "beta", "gamma"}), names);

    // A name buffer must hold the name and its zero.
    DWORD chars = 5;
    EXPECT_EQ(ERROR_MORE_DATA, RegEnumKeyExA(key.get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
    chars = 6;
    EXPECT_EQ(ERROR_SUCCESS, RegEnumKeyExA(key.get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));

    // Values come in the order they were first written; data sizes follow the query rules.
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "z", "last letter"));
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "a", "first letter"));
    DWORD type = 0, size = 4;
    BYTE data[4];
    chars = sizeof name;
    EXPECT_EQ(ERROR_MORE_DATA, RegEnumValueA(key.get(), 0, name, &chars, nullptr, &type, data, &size));
    EXPECT_EQ(12u, size);
    chars = sizeof name;
    size = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegEnumValueA(key.get(), 1, name, &chars, nullptr, &type, nullptr, &size));
    EXPECT_STREQ("a", name);
    EXPECT_EQ(13u, size);
    chars = sizeof name;
    EXPECT_EQ(ERROR_NO_MORE_ITEMS, RegEnumValueA(key.get(), 2, name, &chars, nullptr, nullptr, nullptr, nullptr));

    DWORD subKeys = 0, longest = 0, values = 0, longestValue = 0, largest = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, &subKeys, &longest, nullptr,
                                              &values, &longestValue, &largest, nullptr, nullptr));
    EXPECT_EQ((std::vector<DWORD>{4, 6, 2, 1, 13}), (std::vector<DWORD>{subKeys, longest, values, longestValue, largest}));
}

TEST_F(RegistryTest, DeletingKeysAndValues) {
    Key key;
    ASSERT_EQ(ERROR_SUCCESS, CreateKey(HKEY_CURRENT_USER, "Del\\Leaf", key));
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "v", "x"));

    // Only keys without subkeys can be deleted.
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyA(HKEY_CURRENT_USER, "Del"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueA(key.get(), "V"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueA(key.get(), "v"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyA(HKEY_CURRENT_USER, "del\\LEAF"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteKeyA(HKEY_CURRENT_USER, "Del\\Leaf"));
    EXPECT_FALSE(zetest::KeyExists(HKEY_CURRENT_USER, "Del\\Leaf"));
    EXPECT_TRUE(zetest::KeyExists(HKEY_CURRENT_USER, "Del"));

    // A handle whose key is gone reports it; the handle itself is still closed normally.
    EXPECT_EQ(ERROR_KEY_DELETED, SetString(key.get(), "v", "y"));
    EXPECT_EQ(ERROR_KEY_DELETED, RegQueryValueExA(key.get(), "v", nullptr, nullptr, nullptr, nullptr));

    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyA(HKEY_CURRENT_USER, "Del"));
    // The roots themselves stay.
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyA(HKEY_CLASSES_ROOT, ""));
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyA(HKEY_CURRENT_USER, ""));
}

TEST_F(RegistryTest, BadArgumentsGiveErrorNumbers) {
    Key key;
    EXPECT_EQ(ERROR_INVALID_HANDLE, RegOpenKeyExA(nullptr, "x", 0, KEY_READ, key.out()));
    EXPECT_EQ(ERROR_INVALID_HANDLE,
              RegOpenKeyExA(reinterpret_cast<HKEY>(uintptr_t{0x1234567}), "x", 0, KEY_READ, key.out()));
    const struct {
        std::string path;
        LONG error;
    } badPaths[] = {{"\\lead", ERROR_BAD_PATHNAME},
                    {"a\\\\b", ERROR_BAD_PATHNAME},
                    {std::string(256, 'k'), ERROR_INVALID_PARAMETER},
                    {"line\nbreak", ERROR_INVALID_PARAMETER}};
    for (const auto& bad : badPaths) EXPECT_EQ(bad.error, CreateKey(HKEY_CURRENT_USER, bad.path, key)) << bad.path;
    EXPECT_EQ(ERROR_INVALID_PARAMETER,
              RegCreateKeyExA(HKEY_CURRENT_USER, "x", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, nullptr, nullptr));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegDeleteKeyA(HKEY_CURRENT_USER, nullptr));

    HKEY closed = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CURRENT_USER, "Bad", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &closed, nullptr));
    EXPECT_EQ(ERROR_NOACCESS, RegSetValueExA(closed, "v", 0, REG_BINARY, nullptr, 4));
    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(closed));
    EXPECT_EQ(ERROR_INVALID_HANDLE, RegCloseKey(closed));
    EXPECT_EQ(ERROR_INVALID_HANDLE, SetString(closed, "v", "x"));
    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(HKEY_CLASSES_ROOT));

    // Access rights of the handle are honoured.
    Key readOnly, writeOnly;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "Bad", 0, KEY_READ, readOnly.out()));
    EXPECT_EQ(ERROR_ACCESS_DENIED, SetString(readOnly.get(), "v", "x"));
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "Bad", 0, KEY_SET_VALUE, writeOnly.out()));
    EXPECT_EQ(ERROR_SUCCESS, SetString(writeOnly.get(), "v", "x"));
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegQueryValueExA(writeOnly.get(), "v", nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(ERROR_ACCESS_DENIED, CreateKey(readOnly.get(), "child", key));
}

}  // namespace
