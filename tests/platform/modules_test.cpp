// Module functions over the dynamic loader: loading by either kind of path, exports, file names,
// handles from addresses, and the error numbers of each failure.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include "platform/win32.h"
#include "tests/support/temp_dir.h"

namespace {

std::string RealPath(const std::string& path) {
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) ? std::string(resolved) : path;
}

std::string WindowsStyle(const std::string& path) {
    std::string out = "C:" + path;
    for (char& c : out)
        if (c == '/') c = '\\';
    return out;
}

#ifdef ZE_TEST_SERVER_PATH
TEST(ModulesTest, LoadFindExportsNameAndFree) {
    HMODULE module = LoadLibraryExA(WindowsStyle(ZE_TEST_SERVER_PATH).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    ASSERT_NE(nullptr, module) << GetLastError();
    EXPECT_NE(nullptr, GetProcAddress(module, "DllGetClassObject"));
    EXPECT_EQ(nullptr, GetProcAddress(module, "NoSuchExport"));
    EXPECT_EQ(ERROR_PROC_NOT_FOUND, GetLastError());

    char name[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameA(module, name, MAX_PATH);
    const std::string expected = RealPath(ZE_TEST_SERVER_PATH);
    EXPECT_EQ(expected, name);
    EXPECT_EQ(expected.size(), length);

    // A short buffer gets the start of the path and its size back.
    char small[6] = {};
    EXPECT_EQ(6u, GetModuleFileNameA(module, small, sizeof small));
    EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
    EXPECT_EQ(expected.substr(0, 5), small);

    // The handle of the module that holds an address, and a second load giving the same handle.
    HMODULE fromAddress = nullptr;
    ASSERT_TRUE(
        GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCSTR>(GetProcAddress(module, "DllGetClassObject")), &fromAddress));
    EXPECT_EQ(module, fromAddress);
    HMODULE again = LoadLibraryA(ZE_TEST_SERVER_PATH);
    EXPECT_EQ(module, again);
    EXPECT_TRUE(FreeLibrary(again));
    EXPECT_TRUE(FreeLibrary(module));
}
#endif

TEST(ModulesTest, TheProgramItself) {
    HMODULE program = GetModuleHandleA(nullptr);
    ASSERT_NE(nullptr, program);
    HMODULE fromAddress = nullptr;
    ASSERT_TRUE(
        GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCSTR>(&RealPath), &fromAddress));
    EXPECT_EQ(program, fromAddress);

    char byHandle[MAX_PATH] = {}, byNull[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameA(program, byHandle, MAX_PATH), 0u);
    ASSERT_GT(GetModuleFileNameA(nullptr, byNull, MAX_PATH), 0u);
    EXPECT_STREQ(byNull, byHandle);
    EXPECT_EQ(RealPath("/proc/self/exe"), byNull);
}

TEST(ModulesTest, FailuresGiveWindowsErrorNumbers) {
    EXPECT_EQ(nullptr, LoadLibraryA("/nonexistent/folder/library.so"));
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, GetLastError());
    EXPECT_EQ(nullptr, LoadLibraryA("C:\\nonexistent\\decoder.ax"));
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, GetLastError());
    EXPECT_EQ(nullptr, LoadLibraryA("no_such_library_anywhere.so"));
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, GetLastError());
    EXPECT_EQ(nullptr, LoadLibraryA(nullptr));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());

    // A file that exists but is no library.
    zetest::TempDir folder;
    EXPECT_EQ(nullptr, LoadLibraryA(folder.Put("not_a_library.so", std::string("text\n")).c_str()));
    EXPECT_EQ(ERROR_BAD_EXE_FORMAT, GetLastError());

    // Handles that are no modules are refused, not followed.
    HMODULE bogus = reinterpret_cast<HMODULE>(uintptr_t{0x12345678});
    EXPECT_FALSE(FreeLibrary(bogus));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
    EXPECT_EQ(nullptr, GetProcAddress(bogus, "DllGetClassObject"));
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, GetLastError());
    char name[16];
    EXPECT_EQ(0u, GetModuleFileNameA(bogus, name, sizeof name));
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, GetLastError());
    EXPECT_EQ(nullptr, GetModuleHandleA("never_loaded_library.so"));
    EXPECT_EQ(ERROR_MOD_NOT_FOUND, GetLastError());
    HMODULE none = reinterpret_cast<HMODULE>(1);
    EXPECT_FALSE(GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, nullptr, &none));
    EXPECT_EQ(nullptr, none);
}

}  // namespace
