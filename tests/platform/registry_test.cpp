// The file-backed registry: key and value semantics, the size rules of queries and enumerations,
// case-insensitive names, the REGEDIT4 file, and bad input.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/win32.h"
#include "tests/platform/registry_sandbox.h"

namespace {

// Closes the key when the test is done with it.
class Key {
public:
    Key() = default;
    ~Key() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY* out() { return &key_; }
    HKEY get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

LONG SetString(HKEY key, const char* name, const std::string& text) {
    return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>(text.size() + 1));
}

std::string QueryString(HKEY key, const char* name) {
    char buffer[512] = {};
    DWORD size = sizeof buffer;
    DWORD type = 0;
    if (RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size) != ERROR_SUCCESS)
        return "<missing>";
    return std::string(buffer, size).c_str();
}

bool KeyExists(HKEY root, const char* path) {
    Key key;
    return RegOpenKeyExA(root, path, 0, KEY_READ, key.out()) == ERROR_SUCCESS;
}

class RegistryTest : public ::testing::Test {
protected:
    RegistrySandbox sandbox;
};

TEST_F(RegistryTest, CreateOpenSetAndQueryValuesOfEachType) {
    Key created;
    DWORD disposition = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Ze\\Test", 0, nullptr, 0, KEY_ALL_ACCESS,
                                             nullptr, created.out(), &disposition));
    EXPECT_EQ(REG_CREATED_NEW_KEY, disposition);
    Key again;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Ze\\Test", 0, nullptr, 0, KEY_ALL_ACCESS,
                                             nullptr, again.out(), &disposition));
    EXPECT_EQ(REG_OPENED_EXISTING_KEY, disposition);

    ASSERT_EQ(ERROR_SUCCESS, SetString(created.get(), nullptr, "default text"));
    ASSERT_EQ(ERROR_SUCCESS, SetString(created.get(), "Name", "a \"quoted\" \\ path"));
    const DWORD number = 0xDEADBEEF;
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExA(created.get(), "Number", 0, REG_DWORD,
                                            reinterpret_cast<const BYTE*>(&number), sizeof number));
    const BYTE blob[] = {0, 1, 2, 0xFF, 0x80};
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExA(created.get(), "Blob", 0, REG_BINARY, blob, sizeof blob));

    Key opened;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Ze\\Test", 0, KEY_READ, opened.out()));
    EXPECT_EQ("default text", QueryString(opened.get(), nullptr));
    EXPECT_EQ("default text", QueryString(opened.get(), ""));
    EXPECT_EQ("a \"quoted\" \\ path", QueryString(opened.get(), "Name"));

    DWORD type = 0, value = 0, size = sizeof value;
    ASSERT_EQ(ERROR_SUCCESS,
              RegQueryValueExA(opened.get(), "Number", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size));
    EXPECT_EQ(REG_DWORD, type);
    EXPECT_EQ(0xDEADBEEFu, value);
    EXPECT_EQ(4u, size);

    BYTE read[16] = {};
    size = sizeof read;
    ASSERT_EQ(ERROR_SUCCESS, RegQueryValueExA(opened.get(), "Blob", nullptr, &type, read, &size));
    EXPECT_EQ(REG_BINARY, type);
    ASSERT_EQ(sizeof blob, size);
    EXPECT_EQ(0, memcmp(blob, read, sizeof blob));

    // Overwriting keeps one value of that name, with the new type.
    ASSERT_EQ(ERROR_SUCCESS, SetString(created.get(), "Number", "now text"));
    EXPECT_EQ("now text", QueryString(opened.get(), "Number"));
    DWORD values = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegQueryInfoKeyA(opened.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                              &values, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(4u, values);

    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegQueryValueExA(opened.get(), "Absent", nullptr, nullptr, nullptr, nullptr));
    Key missing;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND,
              RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Ze\\Other", 0, KEY_READ, missing.out()));
}

TEST_F(RegistryTest, QuerySizeRulesFollowMoreData) {
    Key key;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Ze", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                             key.out(), nullptr));
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "Text", "0123456789"));  // 11 bytes with the zero

    DWORD size = 0, type = 0;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExA(key.get(), "Text", nullptr, &type, nullptr, &size));
    EXPECT_EQ(11u, size);
    EXPECT_EQ(REG_SZ, type);

    char small[4] = {'x', 'x', 'x', 'x'};
    size = sizeof small;
    EXPECT_EQ(ERROR_MORE_DATA,
              RegQueryValueExA(key.get(), "Text", nullptr, nullptr, reinterpret_cast<BYTE*>(small), &size));
    EXPECT_EQ(11u, size);

    char exact[11];
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
    Key key;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CLASSES_ROOT, "CLSID\\{ABCDEF}\\InprocServer32", 0, nullptr, 0,
                                             KEY_ALL_ACCESS, nullptr, key.out(), nullptr));
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "ThreadingModel", "Both"));

    Key lower;
    DWORD disposition = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CLASSES_ROOT, "clsid\\{abcdef}\\inprocserver32", 0, nullptr, 0,
                                             KEY_ALL_ACCESS, nullptr, lower.out(), &disposition));
    EXPECT_EQ(REG_OPENED_EXISTING_KEY, disposition);
    EXPECT_EQ("Both", QueryString(lower.get(), "THREADINGMODEL"));
    ASSERT_EQ(ERROR_SUCCESS, SetString(lower.get(), "threadingmodel", "Apartment"));
    EXPECT_EQ("Apartment", QueryString(key.get(), "ThreadingModel"));

    // The classes root is HKEY_LOCAL_MACHINE\SOFTWARE\Classes, and the first spelling stays.
    Key machine;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_LOCAL_MACHINE, "software\\classes\\CLSID", 0, KEY_READ, machine.out()));
    char name[64];
    DWORD chars = sizeof name;
    ASSERT_EQ(ERROR_SUCCESS, RegEnumKeyExA(machine.get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
    EXPECT_STREQ("{ABCDEF}", name);
    char valueName[64];
    chars = sizeof valueName;
    ASSERT_EQ(ERROR_SUCCESS, RegEnumValueA(key.get(), 0, valueName, &chars, nullptr, nullptr, nullptr, nullptr));
    EXPECT_STREQ("ThreadingModel", valueName);
}

TEST_F(RegistryTest, EnumerationOrderAndLimits) {
    Key key;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CURRENT_USER, "Enum", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.out(), nullptr));
    for (const char* child : {"beta", "Alpha", "gamma", "ALPHA2"}) {
        Key sub;
        ASSERT_EQ(ERROR_SUCCESS,
                  RegCreateKeyExA(key.get(), child, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, sub.out(), nullptr));
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
    EXPECT_EQ(4u, subKeys);
    EXPECT_EQ(6u, longest);
    EXPECT_EQ(2u, values);
    EXPECT_EQ(1u, longestValue);
    EXPECT_EQ(13u, largest);
}

TEST_F(RegistryTest, DeletingKeysAndValues) {
    Key key;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CURRENT_USER, "Del\\Leaf", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                             key.out(), nullptr));
    ASSERT_EQ(ERROR_SUCCESS, SetString(key.get(), "v", "x"));

    // Only keys without subkeys can be deleted.
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyA(HKEY_CURRENT_USER, "Del"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueA(key.get(), "V"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueA(key.get(), "v"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyA(HKEY_CURRENT_USER, "del\\LEAF"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteKeyA(HKEY_CURRENT_USER, "Del\\Leaf"));
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, "Del\\Leaf"));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, "Del"));

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
    EXPECT_EQ(ERROR_BAD_PATHNAME,
              RegCreateKeyExA(HKEY_CURRENT_USER, "\\lead", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.out(), nullptr));
    EXPECT_EQ(ERROR_BAD_PATHNAME,
              RegCreateKeyExA(HKEY_CURRENT_USER, "a\\\\b", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.out(), nullptr));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegCreateKeyExA(HKEY_CURRENT_USER, std::string(256, 'k').c_str(), 0, nullptr, 0,
                                                       KEY_ALL_ACCESS, nullptr, key.out(), nullptr));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegCreateKeyExA(HKEY_CURRENT_USER, "line\nbreak", 0, nullptr, 0, KEY_ALL_ACCESS,
                                                       nullptr, key.out(), nullptr));
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
    Key readOnly;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "Bad", 0, KEY_READ, readOnly.out()));
    EXPECT_EQ(ERROR_ACCESS_DENIED, SetString(readOnly.get(), "v", "x"));
    Key writeOnly;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "Bad", 0, KEY_SET_VALUE, writeOnly.out()));
    EXPECT_EQ(ERROR_SUCCESS, SetString(writeOnly.get(), "v", "x"));
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegQueryValueExA(writeOnly.get(), "v", nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(ERROR_ACCESS_DENIED,
              RegCreateKeyExA(readOnly.get(), "child", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.out(), nullptr));
}

}  // namespace
