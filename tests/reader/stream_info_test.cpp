// File check and stream description: CheckFile on both interfaces and the 608-byte stream record.
#include <cstring>

#include "tests/fixtures/ze_temp_file.h"
#include "tests/support/reader_module.h"
#include "tests/reader/reader_test_files.h"

namespace readertest {
namespace {

using zetest::Descriptor;
using zetest::ReaderTest;

class StreamInfo : public ReaderTest {
protected:
    // Opens a file through the exchange, as avihost does before asking for the description.
    HRESULT Open(const zetest::TempFile& file) {
        return exchange->Set(ZE_XP_FILE_PATH, 0, 0, ZE_XT_TEXT, static_cast<DWORD>(file.Path().size() + 1),
                             file.c_str(), 0, nullptr);
    }
    // The record after GetStreamInfo on a record filled with 0xCD first.
    HRESULT Describe(const zetest::AviModel& plan, ZeStreamInfo* info) {
        zetest::TempFile file(zetest::BuildAvi(plan).bytes);
        EXPECT_EQ(S_OK, Open(file));
        std::memset(info, 0xCD, sizeof(*info));
        return video->GetStreamInfo(info);
    }
};

std::vector<uint8_t> Header12(const char* riff, const char* form) {
    std::vector<uint8_t> bytes(64, 0);
    std::memcpy(bytes.data(), riff, 4);
    std::memcpy(bytes.data() + 8, form, 4);
    return bytes;
}

TEST_F(StreamInfo, CheckFileBySignature) {
    zetest::TempFile avix(Header12("RIFF", "AVIX"));
    zetest::TempFile lower(Header12("riff", "avi "));
    zetest::TempFile wave(Header12("RIFF", "WAVE"));
    zetest::TempFile tiny(std::vector<uint8_t>{'R', 'I', 'F', 'F', 0});
    DWORD flags = 7, value = 7;
    EXPECT_EQ(S_OK, video->CheckFile(avix.c_str(), &flags, &value));
    EXPECT_EQ(0u, flags);
    EXPECT_EQ(45u, value);
    EXPECT_EQ(S_OK, video->CheckFile(lower.c_str(), nullptr, nullptr));
    // A file shorter than the signature passes the quick check.
    EXPECT_EQ(S_OK, audio->CheckFile(tiny.c_str()));
    EXPECT_TRUE(NothingReported());

    flags = 7, value = 7;
    EXPECT_TRUE(Fails(video->CheckFile(wave.c_str(), &flags, &value), E_AVI_NOVALIDFILE, "CZeAviFileParser::Parse"));
    EXPECT_EQ(0u, flags);
    EXPECT_EQ(45u, value);
    EXPECT_TRUE(Fails(audio->CheckFile(wave.c_str()), E_AVI_NOVALIDFILE, "CZeAviFileParser::Parse"));
}

TEST_F(StreamInfo, CheckFileBadArgumentsAndAfterAParse) {
    EXPECT_TRUE(Fails(video->CheckFile(nullptr, nullptr, nullptr), E_POINTER, "CZEAviReader::CheckFile"));
    EXPECT_TRUE(Fails(audio->CheckFile(nullptr), E_POINTER, "CZEAviReader::CheckFile"));
    DWORD value = 0;
    EXPECT_TRUE(Fails(video->CheckFile("/no/such/dir/clip.avi", nullptr, &value),
                      E_AVI_OPEN, "CZeAviFileParser::OpenAVIFile"));
    EXPECT_EQ(45u, value);

    // After a parse any path is accepted.
    zetest::TempFile file(zetest::BuildAvi(VideoAvi({})).bytes);
    ASSERT_EQ(S_OK, Open(file));
    EXPECT_EQ(S_OK, video->CheckFile("/no/such/dir/clip.avi", nullptr, nullptr));
    EXPECT_TRUE(NothingReported());
}

TEST_F(StreamInfo, RecordByteForByte) {
    VideoFile plan;
    plan.audio = true;
    plan.firstFrame = std::vector<uint8_t>(64, 0);
    plan.firstFrame[10] = 0x15;
    ZeStreamInfo info;
    ASSERT_EQ(S_OK, Describe(VideoAvi(plan), &info));

    uint8_t expected[608] = {};
    auto u32 = [&](size_t at, uint32_t v) { std::memcpy(expected + at, &v, 4); };
    auto u16 = [&](size_t at, uint16_t v) { std::memcpy(expected + at, &v, 2); };
    auto f64 = [&](size_t at, double v) { std::memcpy(expected + at, &v, 8); };
    u32(0, 608);
    u32(4, 1375 + 0x200);
    u32(8, 8);
    u32(24, 320);
    u32(28, 240);
    u32(40, 320);
    u32(44, 240);
    f64(48, 25.0);
    f64(56, 4.0 / 3.0);
    u32(64, 3);
    std::memcpy(expected + 580, "AVI", 4);
    u16(586, 1);
    u16(588, 2);
    u32(592, 44100);
    u32(596, 176400);
    u16(600, 4);
    u16(602, 16);
    EXPECT_EQ(0, std::memcmp(expected, &info, sizeof(expected)));
    EXPECT_TRUE(NothingReported());
}

TEST_F(StreamInfo, AspectRule) {
    struct Case {
        const char* what;
        int32_t width, height;
        uint8_t aspectByte;
        double aspect;
    };
    const Case cases[] = {
        {"full HD frame", 1920, 1080, 0x00, 16.0 / 9.0},
        {"1440 wide HD frame", 1440, 1080, 0x00, 16.0 / 9.0},
        {"720p frame", 1280, 720, 0x15, 16.0 / 9.0},
        {"wide sequence header byte", 320, 240, 0x25, 16.0 / 9.0},
        {"standard sequence header byte", 320, 240, 0x15, 4.0 / 3.0},
        {"anything else", 320, 240, 0x35, 0.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        VideoFile plan;
        plan.width = c.width;
        plan.height = c.height;
        plan.firstFrame = std::vector<uint8_t>(64, 0);
        plan.firstFrame[10] = c.aspectByte;
        ReaderTest::TearDown();
        ReaderTest::SetUp();
        ZeStreamInfo info;
        ASSERT_EQ(S_OK, Describe(VideoAvi(plan), &info));
        EXPECT_EQ(c.aspect, info.aspectRatio);
        EXPECT_EQ(c.aspect > 0.0 ? 1375u + 0x200u : 1375u, info.capabilities);
        EXPECT_EQ(1u, info.streamKinds);
        EXPECT_EQ(0u, info.wFormatTag);
        EXPECT_EQ(0u, info.nSamplesPerSec);
    }
}

TEST_F(StreamInfo, DvAspectFromTheFrame) {
    std::vector<uint8_t> frame = DvFrame(1);
    // VAUX source control in slot 40: s = 0, d = 2 is 16:9.
    PutPack(frame, 453, 0x61, 0x00, 0x02, 0x00, 0xFF);
    ZeStreamInfo info;
    ASSERT_EQ(S_OK, Describe(DvAvi({frame, frame}, 0), &info));
    EXPECT_DOUBLE_EQ(16.0 / 9.0, info.aspectRatio);
    EXPECT_EQ(720, info.width);
    EXPECT_EQ(576, info.height);
    EXPECT_EQ(2u, info.frameCount);
}

TEST_F(StreamInfo, InterleavedDvDescribesItsPictureFromTheStreamRectangle) {
    // A type-1 file has no bitmap header; its empty rectangle is sized from the 25 fps DV system.
    zetest::AviModel plan;
    plan.streams.push_back(zetest::IavsStream(true));
    plan.width = 0;
    plan.height = 0;
    for (uint8_t k = 0; k < 3; ++k) plan.chunks.push_back(zetest::ChunkModel{"00__", DvFrame(k)});
    ZeStreamInfo info;
    ASSERT_EQ(S_OK, Describe(plan, &info));
    EXPECT_EQ(720, info.width);
    EXPECT_EQ(576, info.height);
    EXPECT_DOUBLE_EQ(25.0, info.frameRate);
    EXPECT_EQ(3u, info.frameCount);
    EXPECT_EQ(0u, info.formatFlags);
}

TEST_F(StreamInfo, RateScaleAndCompressionFlags) {
    VideoFile avc;
    avc.handler = "H264";
    avc.rate = 30000;
    avc.scale = 1001;
    ZeStreamInfo info;
    ASSERT_EQ(S_OK, Describe(VideoAvi(avc), &info));
    EXPECT_EQ(0x01000000u, info.formatFlags);
    EXPECT_DOUBLE_EQ(30000.0 / 1001.0, info.frameRate);

    ReaderTest::TearDown();
    ReaderTest::SetUp();
    VideoFile noScale;
    noScale.scale = 0;
    ASSERT_EQ(S_OK, Describe(VideoAvi(noScale), &info));
    EXPECT_EQ(0u, info.formatFlags);
    EXPECT_EQ(0.0, info.frameRate);
}

TEST_F(StreamInfo, Failures) {
    ZeStreamInfo info;
    EXPECT_TRUE(Fails(video->GetStreamInfo(nullptr), E_POINTER, "CZEAviReader::GetStreamInfo"));
    EXPECT_TRUE(Fails(video->GetStreamInfo(&info), E_AVI_PARSE, "CZEAviReader::GetStreamInfo"));

    // Audio only: the call fails and leaves only the first three fields written.
    zetest::AviModel plan;
    plan.streams.push_back(zetest::PcmStream(2, 32000, 16));
    plan.chunks = zetest::PatternChunks("00wb", 4, 512);
    ASSERT_EQ(E_POINTER, Describe(plan, &info));
    EXPECT_TRUE(ReportedOnce(E_POINTER, "CZEAviReader::GetStreamInfo"));
    EXPECT_EQ(608u, info.cbSize);
    EXPECT_EQ(1375u, info.capabilities);
    EXPECT_EQ(8u, info.streamKinds);
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&info);
    for (size_t i = 12; i < sizeof(info); ++i) ASSERT_EQ(0, bytes[i]) << "byte " << i;
}

}  // namespace
}  // namespace readertest
