// The file layer on real files: CZeFile and CZeFileView in both read and both seek modes with their
// mapping rules, and the POSIX stand-ins for the Windows file, mapping and sync calls beneath them.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "avi/ze_osal_file.h"
#include "platform/win32.h"
#include "tests/fixtures/ze_temp_file.h"

using ZeOSAL::CZeFile;
using ZeOSAL::CZeFileView;
using zetest::TempFile;

namespace {

// Bytes whose value tells their position, so that a misplaced read shows.
std::vector<uint8_t> PatternBytes(size_t n) {
    std::vector<uint8_t> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>((i * 7u + (i >> 8) * 13u) & 0xFF);
    return v;
}

constexpr uint32_t kMappedFlags = FILE_ATTRIBUTE_READONLY | FILE_FLAG_NO_BUFFERING;

int32_t OpenMapped(CZeFile& f, const std::string& path) {
    return f.Open(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, kMappedFlags, nullptr);
}

uint32_t SeekTo(CZeFile& f, uint64_t pos) {
    int32_t high = static_cast<int32_t>(pos >> 32);
    return f.Seek(static_cast<int32_t>(static_cast<uint32_t>(pos)), &high, FILE_BEGIN);
}

class GranularityGuard {
public:
    explicit GranularityGuard(DWORD g) { ZeSetAllocationGranularityForTesting(g); }
    ~GranularityGuard() { ZeSetAllocationGranularityForTesting(0); }
};

TEST(MappedRead, ShortReadsAtAndPastTheEnd) {
    const auto bytes = PatternBytes(1000);
    TempFile file(bytes);
    CZeFile f;
    ASSERT_EQ(OpenMapped(f, file.Path()), 0);
    ASSERT_TRUE(f.IsOpen());

    uint8_t buf[64];
    uint64_t count = 20, got = 12345;
    SeekTo(f, 990);
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);  // runs past the end: shortened, still succeeds
    EXPECT_EQ(got, 10u);
    EXPECT_EQ(0, memcmp(buf, bytes.data() + 990, 10));
    EXPECT_EQ(f.GetPosition(), 1000u);

    got = 12345;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);  // starts exactly at the end
    EXPECT_EQ(got, 0u);

    SeekTo(f, 1001);
    got = 12345;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), E_FAIL);  // starts past the end
    EXPECT_EQ(got, 0u);

    // A read of nothing leaves the count read untouched, wherever the position stands.
    uint64_t none = 0;
    got = 777;
    EXPECT_EQ(f.Read(buf, &none, &got, nullptr), 0);
    EXPECT_EQ(got, 777u);
    EXPECT_EQ(f.GetPosition(), 1001u);

    // The object stays usable.
    SeekTo(f, 0);
    count = 8;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(got, 8u);
    EXPECT_EQ(0, memcmp(buf, bytes.data(), 8));
    EXPECT_EQ(f.Close(), 0);
}

TEST(MappedRead, NullBufferAndClosedFileGivePointerError) {
    TempFile file(PatternBytes(100));
    CZeFile f;
    ASSERT_EQ(OpenMapped(f, file.Path()), 0);
    uint64_t count = 4, got = 0;
    EXPECT_EQ(f.Read(nullptr, &count, &got, nullptr), E_POINTER);
    uint8_t buf[4];
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(got, 4u);
    EXPECT_EQ(f.Close(), 0);
    EXPECT_FALSE(f.IsOpen());
    // Close clears the flags, so a closed file reads through the plain path, which fails.
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), E_FAIL);
    // Closed again: CloseHandle fails, yet the result is the view reset's 0.
    EXPECT_EQ(f.Close(), 0);
    // And it opens again.
    ASSERT_EQ(OpenMapped(f, file.Path()), 0);
    SeekTo(f, 0);
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(got, 4u);
}

TEST(MappedRead, EmptyFileOpensButCannotBeMappedSoReadsFail) {
    TempFile file({});
    CZeFile f;
    const int32_t attach = OpenMapped(f, file.Path());
    EXPECT_GT(attach, 0);  // a Win32 error number from the read-only mapping, not an HRESULT
    EXPECT_TRUE(f.IsOpen());
    uint8_t buf[4];
    uint64_t count = 4, got = 9;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), E_FAIL);
    EXPECT_EQ(got, 0u);
}

TEST(MappedRead, MissingFileFailsToOpen) {
    CZeFile f;
    EXPECT_EQ(f.Open("/nonexistent/dir/clip.avi", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                     kMappedFlags, nullptr),
              E_FAIL);
    EXPECT_FALSE(f.IsOpen());
    // The flags of the failed open are kept, so the read takes the mapped path and sees no handle.
    uint8_t buf[4];
    uint64_t count = 4, got = 5;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), E_POINTER);
    EXPECT_EQ(got, 5u);
}

TEST(MappedRead, RandomReadsMatchTheFileAcrossViewBoundaries) {
    const auto bytes = PatternBytes(3 * 65536 + 12345);
    TempFile file(bytes);
    for (DWORD granularity : {0u, 4096u, 8192u}) {
        GranularityGuard guard(granularity);
        CZeFile f;
        ASSERT_EQ(OpenMapped(f, file.Path()), 0);
        std::mt19937 rng(granularity + 1);
        std::vector<uint8_t> buf(70000);
        for (int i = 0; i < 300; ++i) {
            const uint64_t pos = rng() % bytes.size();
            uint64_t count = 1 + rng() % 70000, got = 0;
            SeekTo(f, pos);
            ASSERT_EQ(f.Read(buf.data(), &count, &got, nullptr), 0);
            const uint64_t expect = std::min<uint64_t>(count, bytes.size() - pos);
            ASSERT_EQ(got, expect) << pos;
            ASSERT_EQ(0, memcmp(buf.data(), bytes.data() + pos, expect)) << "at " << pos << " g " << granularity;
        }
    }
}

TEST(FileView, ViewsStartAtTheGranularityBelowTheOffset) {
    const auto bytes = PatternBytes(200000);
    TempFile file(bytes);
    const struct {
        DWORD setGranularity, granularity;
        uint64_t offset;
        uint32_t mappedLength;
    } cases[] = {{4096, 4096, 5000, 10 + (5000 - 4096)}, {0, 65536, 70000, 10 + (70000 - 65536)}, {0, 65536, 0, 10}};
    // One object per granularity, so that the last case maps again below the view the one before made.
    std::unique_ptr<GranularityGuard> guard;
    std::unique_ptr<CZeFile> f;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.offset);
        if (&c == &cases[0] || c.setGranularity != (&c - 1)->setGranularity) {
            f.reset();
            guard.reset();
            guard.reset(new GranularityGuard(c.setGranularity));
            f.reset(new CZeFile);
            ASSERT_EQ(OpenMapped(*f, file.Path()), 0);
        }
        EXPECT_EQ(f->GetView().GetGranularity(), c.granularity);
        uint8_t buf[10];
        uint64_t count = 10, got = 0;
        SeekTo(*f, c.offset);
        ASSERT_EQ(f->Read(buf, &count, &got, nullptr), 0);
        EXPECT_EQ(f->GetView().GetMappedLength(), c.mappedLength);
        EXPECT_EQ(0, memcmp(buf, bytes.data() + c.offset, 10));
        EXPECT_TRUE(f->GetView().IsReadOnlyMapping());
    }
}

TEST(FileView, ArgumentAndHandleChecks) {
    CZeFileView view;
    const uint8_t* data = nullptr;
    uint32_t size = 4;
    EXPECT_EQ(view.Attach(INVALID_HANDLE_VALUE), ERROR_INVALID_HANDLE);
    EXPECT_EQ(view.MapRange(&data, nullptr, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(view.MapRange(&data, &size, UINT64_MAX), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(view.MapRange(&data, &size, 0), ERROR_INVALID_HANDLE);
    EXPECT_EQ(view.Reset(), 0u);

    TempFile file(PatternBytes(100));
    HANDLE h = CreateFileA(file.Path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    ASSERT_EQ(view.Attach(h), 0u);
    CloseHandle(h);  // the view keeps its own duplicate
    size = 50;
    ASSERT_EQ(view.MapRange(&data, &size, 60), 0u);
    EXPECT_EQ(size, 40u);
    EXPECT_EQ(data[0], PatternBytes(100)[60]);
    size = 1;
    EXPECT_EQ(view.MapRange(&data, &size, 101), ERROR_INVALID_PARAMETER);
    size = 64;  // an offset that would wrap past 2^64 with the size added
    EXPECT_EQ(view.MapRange(&data, &size, UINT64_MAX - 10), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(view.GetFileSize(), 100u);
    EXPECT_EQ(view.Reset(), 0u);
    EXPECT_EQ(view.GetFileSize(), 0u);
}

TEST(MappedSeek, CurrentAddsWordsWithoutCarryAndEndIsIgnored) {
    TempFile file(PatternBytes(16));
    CZeFile f;
    ASSERT_EQ(OpenMapped(f, file.Path()), 0);
    int32_t high = 0;
    EXPECT_EQ(f.Seek(static_cast<int32_t>(0xFFFFFFF0u), &high, FILE_BEGIN), 0xFFFFFFF0u);
    high = 0;
    EXPECT_EQ(f.Seek(0x20, &high, FILE_CURRENT), 0x10u);
    EXPECT_EQ(f.GetPosition(), 0x10u);  // no carry into the high word
    high = 1;
    EXPECT_EQ(f.Seek(0, &high, FILE_CURRENT), 0x10u);
    EXPECT_EQ(f.GetPosition(), 0x100000010ull);
    EXPECT_EQ(high, 1);  // not written back
    high = 0;
    EXPECT_EQ(f.Seek(5, &high, FILE_END), 0x10u);
    EXPECT_EQ(f.GetPosition(), 0x100000010ull);
    EXPECT_EQ(f.Seek(5, nullptr, FILE_BEGIN), 0x10u);  // no high word: nothing changes
    EXPECT_EQ(f.GetPosition(), 0x100000010ull);
}

TEST(PlainMode, ReadsAndSeeksThroughTheOperatingSystem) {
    const auto bytes = PatternBytes(300);
    TempFile file(bytes);
    CZeFile f;
    ASSERT_EQ(f.Open(file.Path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                     FILE_ATTRIBUTE_NORMAL, nullptr),
              0);
    EXPECT_EQ(f.Seek(290, nullptr, FILE_BEGIN), 290u);
    uint8_t buf[32];
    uint64_t count = 32, got = 0;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(got, 10u);
    EXPECT_EQ(0, memcmp(buf, bytes.data() + 290, 10));
    EXPECT_EQ(f.Seek(-20, nullptr, FILE_END), 280u);
    EXPECT_EQ(f.Seek(-1000, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(f.Close(), 0);
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), E_FAIL);
}

TEST(FourCC, BuildersAndPathJoin) {
    EXPECT_EQ(ZeOSAL::MakeFourCC("RIFF"), 0x46464952u);
    EXPECT_EQ(ZeOSAL::MakeFourCC("00dc"), ZeOSAL::MakeFourCCFromPair("00", "dc"));
    EXPECT_EQ(ZeOSAL::MakeFourCCFromPair("01xx", "wbyy"), 0x62773130u);
    // Characters are widened as signed bytes: a high character floods the bytes above it.
    EXPECT_EQ(ZeOSAL::MakeFourCC("\x80" "abc"), 0xFFFFFF80u);
    EXPECT_EQ(ZeOSAL::MakeFourCC("ab\x80" "c"), 0xFF806261u);

    char path[MAX_PATH + 64];
    ZeOSAL::AppendPath(path, "C:\\Program Files\\Ze", "RegModule");
    EXPECT_STREQ(path, "C:\\Program Files\\Ze\\RegModule");
    ZeOSAL::AppendPath(path, "C:\\dir\\", "x.ax");
    EXPECT_STREQ(path, "C:\\dir\\x.ax");
    ZeOSAL::AppendPath(path, "", "x.ax");
    EXPECT_STREQ(path, "\\x.ax");
}

TEST(Win32Files, OpenErrorsUseWindowsNumbers) {
    EXPECT_EQ(CreateFileA("/no/such/file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(CreateFileA("/tmp", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    TempFile file(PatternBytes(10));
    EXPECT_EQ(CreateFileA(file.Path().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    EXPECT_FALSE(CloseHandle(reinterpret_cast<HANDLE>(0x1234)));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Win32Files, BackslashPathsWork) {
    TempFile file(PatternBytes(10));
    std::string windowsPath = file.Path();
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
    HANDLE h = CreateFileA(file.Path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
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
