// The registry's file: what is written, what is read back, where it lives, and damaged content.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/win32.h"
#include "tests/platform/registry_sandbox.h"

namespace {

class RegistryFileTest : public ::testing::Test {
protected:
    RegistrySandbox sandbox;

    static std::vector<BYTE> Query(HKEY root, const char* path, const char* name, DWORD* type) {
        HKEY key = nullptr;
        std::vector<BYTE> data;
        if (RegOpenKeyExA(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return data;
        DWORD size = 0;
        if (RegQueryValueExA(key, name, nullptr, type, nullptr, &size) == ERROR_SUCCESS) {
            data.resize(size);
            RegQueryValueExA(key, name, nullptr, type, data.data(), &size);
        }
        RegCloseKey(key);
        return data;
    }

    static void Write(HKEY root, const char* path, const char* name, DWORD type, const void* data, DWORD size) {
        HKEY key = nullptr;
        ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
        ASSERT_EQ(ERROR_SUCCESS, RegSetValueExA(key, name, 0, type, static_cast<const BYTE*>(data), size));
        RegCloseKey(key);
    }
};

TEST_F(RegistryFileTest, WritesReadableRegedit4Text) {
    Write(HKEY_CLASSES_ROOT, "CLSID\\{1}\\InprocServer32", nullptr, REG_SZ, "/lib/x.so", 10);
    Write(HKEY_CLASSES_ROOT, "CLSID\\{1}\\InprocServer32", "ThreadingModel", REG_SZ, "Both", 5);
    const DWORD number = 42;
    Write(HKEY_CURRENT_USER, "Ze", "Count", REG_DWORD, &number, 4);
    const BYTE blob[] = {1, 0xAB};
    Write(HKEY_CURRENT_USER, "Ze", "Blob", REG_BINARY, blob, 2);
    Write(HKEY_CURRENT_USER, "Ze", "Quote", REG_SZ, "say \"hi\"\\", 10);
    // Two bytes of a longer string: stored without a zero, so it has to be kept byte for byte.
    Write(HKEY_CURRENT_USER, "Ze", "Short", REG_SZ, "ORVEN", 2);

    const std::string text = sandbox.FileText();
    EXPECT_EQ(0u, text.find("REGEDIT4\n"));
    EXPECT_NE(std::string::npos, text.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{1}\\InprocServer32]\n"
                                           "@=\"/lib/x.so\"\n\"ThreadingModel\"=\"Both\"\n"));
    EXPECT_NE(std::string::npos, text.find("[HKEY_CURRENT_USER\\Ze]\n\"Count\"=dword:0000002a\n\"Blob\"=hex:01,ab\n"
                                           "\"Quote\"=\"say \\\"hi\\\"\\\\\"\n\"Short\"=hex(1):4f,52\n"));

    DWORD type = 0;
    EXPECT_EQ((std::vector<BYTE>{'O', 'R'}), Query(HKEY_CURRENT_USER, "Ze", "Short", &type));
    EXPECT_EQ(REG_SZ, type);
    const std::vector<BYTE> quote = Query(HKEY_CURRENT_USER, "Ze", "Quote", &type);
    EXPECT_EQ(std::string("say \"hi\"\\", 10), std::string(quote.begin(), quote.end()));
}

TEST_F(RegistryFileTest, ReadsHandWrittenFilesAndSkipsDamagedLines) {
    sandbox.WriteFileText(
        "Windows Registry Editor Version 5.00\r\n"
        "\r\n"
        "; a comment\r\n"
        "[HKEY_CLASSES_ROOT\\CLSID\\{2}]\r\n"
        "@=\"two\"\r\n"
        "\"Data\"=hex:00,01,02,\\\r\n"
        "  03,04\r\n"
        "\"Wide\"=hex(2):41,00,00,00\r\n"
        "\"Broken\"=dword:xyz\r\n"
        "this line is noise\r\n"
        "[HKEY_NOWHERE\\Lost]\r\n"
        "\"Ignored\"=\"yes\"\r\n"
        "[HKEY_CURRENT_USER\\Kept]\r\n"
        "\"N\"=DWORD:00000007\r\n");
    DWORD type = 0;
    EXPECT_EQ((std::vector<BYTE>{'t', 'w', 'o', 0}),
              Query(HKEY_LOCAL_MACHINE, "Software\\Classes\\CLSID\\{2}", nullptr, &type));
    EXPECT_EQ((std::vector<BYTE>{0, 1, 2, 3, 4}), Query(HKEY_CLASSES_ROOT, "CLSID\\{2}", "Data", &type));
    EXPECT_EQ(REG_BINARY, type);
    EXPECT_EQ((std::vector<BYTE>{0x41, 0, 0, 0}), Query(HKEY_CLASSES_ROOT, "CLSID\\{2}", "Wide", &type));
    EXPECT_EQ(REG_EXPAND_SZ, type);
    EXPECT_TRUE(Query(HKEY_CLASSES_ROOT, "CLSID\\{2}", "Broken", &type).empty());
    EXPECT_EQ((std::vector<BYTE>{7, 0, 0, 0}), Query(HKEY_CURRENT_USER, "Kept", "N", &type));
    EXPECT_EQ(REG_DWORD, type);
}

TEST_F(RegistryFileTest, GarbageInTheFileIsNoObstacle) {
    // Bytes of every value, long lines, stray brackets and quotes: nothing parses, nothing breaks.
    std::string garbage = "REGEDIT4\n[HKEY_CURRENT_USER\\Good]\n\"v\"=dword:00000001\n";
    uint32_t state = 12345;
    for (int i = 0; i < 20000; ++i) {
        state = state * 1103515245u + 12345u;
        garbage.push_back(static_cast<char>(state >> 16));
    }
    garbage +=
        "\n[HKEY_CURRENT_USER\\\\Empty\\\\Parts]\n\"unterminated=\"x\n@=hex:zz\n\"a\"=hex(zz):00\n[HKEY_CURRENT_USER\n";
    sandbox.WriteFileText(garbage);

    DWORD type = 0;
    EXPECT_EQ((std::vector<BYTE>{1, 0, 0, 0}), Query(HKEY_CURRENT_USER, "Good", "v", &type));
    HKEY key = nullptr;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegOpenKeyExA(HKEY_CURRENT_USER, "Empty", 0, KEY_READ, &key));
    // The next change writes a clean file that keeps what could be read.
    Write(HKEY_CURRENT_USER, "Good", "w", REG_SZ, "ok", 3);
    EXPECT_EQ((std::vector<BYTE>{1, 0, 0, 0}), Query(HKEY_CURRENT_USER, "Good", "v", &type));
    const std::string text = sandbox.FileText();
    EXPECT_EQ(0u, text.find("REGEDIT4\n"));
    EXPECT_LT(text.size(), 200u);  // the garbage is gone
}

TEST_F(RegistryFileTest, EverythingSurvivesARewriteOfTheFile) {
    Write(HKEY_CURRENT_USER, "A\\B", "s", REG_SZ, "text", 5);
    const BYTE all[] = {0, 0x0A, 0x0D, '"', '\\', 0xFF};
    Write(HKEY_CURRENT_USER, "A\\B", "odd", REG_SZ, all, sizeof all);  // a string no quote can carry
    Write(HKEY_CURRENT_USER, "A\\Empty", "e", REG_BINARY, nullptr, 0);
    Write(HKEY_CURRENT_USER, "A\\B", "q", REG_QWORD, "12345678", 8);
    const std::string first = sandbox.FileText();

    // Reading back and writing again (any change makes a full rewrite) reproduces the same text.
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CURRENT_USER, "A\\Z", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    RegCloseKey(key);
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyA(HKEY_CURRENT_USER, "A\\Z"));
    EXPECT_EQ(first, sandbox.FileText());

    DWORD type = 0;
    EXPECT_EQ(std::vector<BYTE>(all, all + sizeof all), Query(HKEY_CURRENT_USER, "A\\B", "odd", &type));
    EXPECT_EQ(REG_SZ, type);
    EXPECT_TRUE(Query(HKEY_CURRENT_USER, "A\\Empty", "e", &type).empty());
    EXPECT_EQ(REG_BINARY, type);
    EXPECT_EQ(8u, Query(HKEY_CURRENT_USER, "A\\B", "q", &type).size());
    EXPECT_EQ(REG_QWORD, type);
}

TEST_F(RegistryFileTest, StoreLocationFollowsTheEnvironment) {
    Write(HKEY_CURRENT_USER, "Here", "v", REG_SZ, "1", 2);
    EXPECT_NE(std::string::npos, sandbox.FileText().find("[HKEY_CURRENT_USER\\Here]"));

    // Without ZE_REGISTRY_FILE the store is under XDG_DATA_HOME, in a folder made on demand.
    const std::string dataHome = sandbox.Folder() + "/xdg";
    const char* oldXdg = std::getenv("XDG_DATA_HOME");
    const std::string keepXdg = oldXdg ? oldXdg : "";
    ::unsetenv("ZE_REGISTRY_FILE");
    ::setenv("XDG_DATA_HOME", dataHome.c_str(), 1);
    Write(HKEY_CURRENT_USER, "There", "v", REG_SZ, "2", 2);
    HKEY key = nullptr;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegOpenKeyExA(HKEY_CURRENT_USER, "Here", 0, KEY_READ, &key));
    if (oldXdg)
        ::setenv("XDG_DATA_HOME", keepXdg.c_str(), 1);
    else
        ::unsetenv("XDG_DATA_HOME");
    ::setenv("ZE_REGISTRY_FILE", sandbox.Path().c_str(), 1);

    FILE* file = std::fopen((dataHome + "/zeavireader/registry.reg").c_str(), "r");
    ASSERT_NE(nullptr, file);
    char line[64] = {};
    std::fgets(line, sizeof line, file);
    std::fclose(file);
    EXPECT_STREQ("REGEDIT4\n", line);
    EXPECT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "Here", 0, KEY_READ, &key));
    RegCloseKey(key);
}

}  // namespace
