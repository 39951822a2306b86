// CZeFile and CZeFileView on real files: both read modes, both seek modes, mapping rules.
#include <gtest/gtest.h>

#include <random>

#include "avi/ze_osal_file.h"
#include "tests/foundation/temp_file.h"

using ZeOSAL::CZeFile;
using ZeOSAL::CZeFileView;

namespace {

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
    ASSERT_EQ(OpenMapped(f, file.path()), 0);
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

    // The object stays usable.
    SeekTo(f, 0);
    count = 8;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(got, 8u);
    EXPECT_EQ(0, memcmp(buf, bytes.data(), 8));
    EXPECT_EQ(f.Close(), 0);
}

TEST(MappedRead, ZeroByteReadLeavesBytesReadUntouched) {
    TempFile file(PatternBytes(100));
    CZeFile f;
    ASSERT_EQ(OpenMapped(f, file.path()), 0);
    uint8_t buf[4];
    uint64_t count = 0, got = 777;
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(got, 777u);
    EXPECT_EQ(f.GetPosition(), 0u);
}

TEST(MappedRead, NullBufferAndClosedFileGivePointerError) {
    TempFile file(PatternBytes(100));
    CZeFile f;
    ASSERT_EQ(OpenMapped(f, file.path()), 0);
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
    ASSERT_EQ(OpenMapped(f, file.path()), 0);
    SeekTo(f, 0);
    EXPECT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(got, 4u);
}

TEST(MappedRead, EmptyFileOpensButCannotBeMappedSoReadsFail) {
    TempFile file({});
    CZeFile f;
    const int32_t attach = OpenMapped(f, file.path());
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
        ASSERT_EQ(OpenMapped(f, file.path()), 0);
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
    {
        GranularityGuard guard(4096);
        CZeFile f;
        ASSERT_EQ(OpenMapped(f, file.path()), 0);
        EXPECT_EQ(f.GetView().GetGranularity(), 4096u);
        uint8_t buf[10];
        uint64_t count = 10, got = 0;
        SeekTo(f, 5000);
        ASSERT_EQ(f.Read(buf, &count, &got, nullptr), 0);
        EXPECT_EQ(f.GetView().GetMappedLength(), 10u + (5000u - 4096u));
        EXPECT_EQ(0, memcmp(buf, bytes.data() + 5000, 10));
    }
    CZeFile f;
    ASSERT_EQ(OpenMapped(f, file.path()), 0);
    EXPECT_EQ(f.GetView().GetGranularity(), 65536u);
    uint8_t buf[10];
    uint64_t count = 10, got = 0;
    SeekTo(f, 70000);
    ASSERT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(f.GetView().GetMappedLength(), 10u + (70000u - 65536u));
    SeekTo(f, 0);
    ASSERT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(f.GetView().GetMappedLength(), 10u);
    EXPECT_TRUE(f.GetView().IsReadOnlyMapping());
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
    HANDLE h = CreateFileA(file.path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
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
    ASSERT_EQ(OpenMapped(f, file.path()), 0);
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

TEST(MappedRead, AdvanceAfterReadCarriesIntoHighWord) {
    TempFile file(PatternBytes(16));
    CZeFile f;
    ASSERT_EQ(OpenMapped(f, file.path()), 0);
    SeekTo(f, 8);
    uint8_t buf[8];
    uint64_t count = 8, got = 0;
    ASSERT_EQ(f.Read(buf, &count, &got, nullptr), 0);
    EXPECT_EQ(f.GetPosition(), 16u);
}

TEST(PlainMode, ReadsAndSeeksThroughTheOperatingSystem) {
    const auto bytes = PatternBytes(300);
    TempFile file(bytes);
    CZeFile f;
    ASSERT_EQ(f.Open(file.path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
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

}  // namespace
