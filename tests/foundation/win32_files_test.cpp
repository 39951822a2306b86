// The POSIX stand-ins for the Windows file and mapping calls give Windows' results.
#include <gtest/gtest.h>

#include "platform/win32.h"
#include "tests/foundation/temp_file.h"

namespace {

TEST(Win32Files, OpenErrorsUseWindowsNumbers) {
    EXPECT_EQ(CreateFileA("/no/such/file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(CreateFileA("/tmp", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    TempFile file(PatternBytes(10));
    EXPECT_EQ(CreateFileA(file.path().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    EXPECT_FALSE(CloseHandle(reinterpret_cast<HANDLE>(0x1234)));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Win32Files, BackslashPathsWork) {
    TempFile file(PatternBytes(10));
    std::string windowsPath = file.path();
    for (char& c : windowsPath)
        if (c == '/') c = '\\';
    HANDLE h = CreateFileA(windowsPath.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    BY_HANDLE_FILE_INFORMATION info;
    ASSERT_TRUE(GetFileInformationByHandle(h, &info));
    EXPECT_EQ(info.nFileSizeLow, 10u);
    EXPECT_EQ(info.nFileSizeHigh, 0u);
    EXPECT_TRUE(CloseHandle(h));
}

TEST(Win32Mappings, ProtectionSizeAndAlignmentRules) {
    TempFile file(PatternBytes(100000));
    HANDLE h = CreateFileA(file.path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    EXPECT_EQ(CreateFileMappingA(h, nullptr, PAGE_READWRITE, 0, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(CreateFileMappingA(h, nullptr, PAGE_READONLY, 0, 200000, nullptr), nullptr);
    EXPECT_NE(GetLastError(), 0u);
    HANDLE m = CreateFileMappingA(h, nullptr, PAGE_READONLY, 0, 0, nullptr);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(MapViewOfFile(m, FILE_MAP_READ, 0, 4096, 10), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MAPPED_ALIGNMENT);
    EXPECT_EQ(MapViewOfFile(m, FILE_MAP_WRITE, 0, 0, 10), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    auto* view = static_cast<const uint8_t*>(MapViewOfFile(m, FILE_MAP_READ, 0, 65536, 0));  // 0: to the end
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view[100000 - 65536 - 1], PatternBytes(100000)[99999]);
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(UnmapViewOfFile(view));
    HANDLE dup = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), h, GetCurrentProcess(), &dup, 0, FALSE, DUPLICATE_SAME_ACCESS));
    EXPECT_TRUE(CloseHandle(h));
    BY_HANDLE_FILE_INFORMATION info;
    EXPECT_TRUE(GetFileInformationByHandle(dup, &info));  // the duplicate outlives the original
    EXPECT_TRUE(CloseHandle(dup));
    EXPECT_TRUE(CloseHandle(m));
    SYSTEM_INFO si;
    GetSystemInfo(&si);
    EXPECT_EQ(si.dwAllocationGranularity, 65536u);
}

TEST(Win32Sync, CriticalSectionIsReentrant) {
    CRITICAL_SECTION cs;
    InitializeCriticalSection(&cs);
    EnterCriticalSection(&cs);
    EnterCriticalSection(&cs);
    LeaveCriticalSection(&cs);
    LeaveCriticalSection(&cs);
    DeleteCriticalSection(&cs);
    LONG v = 0;
    EXPECT_EQ(InterlockedIncrement(&v), 1);
    EXPECT_EQ(InterlockedDecrement(&v), 0);
    EXPECT_EQ(InterlockedDecrement(&v), -1);
}

}  // namespace
