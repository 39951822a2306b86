// The header list: frame rectangle repairs, which streams are kept, stream names, format blocks,
// and header lists that claim more than the file holds.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/avi/parser_test_support.h"

namespace zetest {
namespace {

// A "dvsd" handler over an uncompressed bitmap format: the rectangle rule applies, the DV set-up
// (which follows the bitmap's compression) does not.
AviModel DvHandlerModel(uint32_t rate, uint32_t scale) {
    AviModel model = VideoModel(2, 10);
    model.width = 320;
    model.height = 240;
    model.streams[0].fccHandler = "dvsd";
    model.streams[0].rate = rate;
    model.streams[0].scale = scale;
    std::fill(std::begin(model.streams[0].frame), std::end(model.streams[0].frame), 0);
    return model;
}

void ExpectFrame(const CZeAviFileParser& parser, int32_t right, int32_t bottom) {
    const CZeAviStreamHeader* header = parser.GetVideoStreamHeader();
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->GetFrame().left, 0);
    EXPECT_EQ(header->GetFrame().top, 0);
    EXPECT_EQ(header->GetFrame().right, right);
    EXPECT_EQ(header->GetFrame().bottom, bottom);
}

// An empty rectangle takes the DV picture of the rate, and the main header follows; below 25
// frames a second, or without a scale, the rectangle stays empty and nothing else steps in.
TEST(ParserHeader, EmptyDVFramesTakeThePictureSizeOfTheirRate) {
    struct Case {
        uint32_t rate;
        uint32_t scale;
        int32_t right;
        int32_t bottom;
    };
    const Case cases[] = {{25, 1, 720, 576}, {30000, 1001, 720, 480}, {24, 1, 0, 0}, {25, 0, 0, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.rate) + "/" + std::to_string(c.scale));
        ParsedBytes f(BuildAvi(DvHandlerModel(c.rate, c.scale)).bytes);
        ASSERT_EQ(f.parse, S_OK);
        ExpectFrame(f.parser, c.right, c.bottom);
        EXPECT_EQ(f.parser.GetMainHeader().GetWidth(), c.right ? 720u : 320u);
        EXPECT_EQ(f.parser.GetMainHeader().GetHeight(), c.right ? static_cast<uint32_t>(c.bottom) : 240u);
    }
}

TEST(ParserHeader, AnInvertedRectangleTakesTheMainHeadersFrame) {
    AviModel model = VideoModel(2, 10);
    model.width = 640;
    model.height = 360;
    const int16_t frame[4] = {100, 5, 100, 50};  // right not beyond left
    std::copy(std::begin(frame), std::end(frame), model.streams[0].frame);
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    ExpectFrame(f.parser, 640, 360);

    // Edges are 16-bit on disk and widened without sign.
    const int16_t negative[4] = {-2, 0, 10, 10};
    std::copy(std::begin(negative), std::end(negative), model.streams[0].frame);
    ParsedBytes wide(BuildAvi(model).bytes);
    ASSERT_EQ(wide.parse, S_OK);
    ExpectFrame(wide.parser, 640, 360);  // left 65534 is beyond right 10
}

// Compressed audio and streams of an unknown type are left out; the PCM stream after them is
// numbered as the second kept stream.
TEST(ParserHeader, OnlyVideoAndPcmAudioStreamsAreKept) {
    AviModel model = VideoModel(0, 0);
    model.streams.push_back(CompressedAudioStream(0x55, 2, 44100));
    StreamModel text;
    text.fccType = "txts";
    text.format = {1, 2, 3, 4};
    model.streams.push_back(text);
    model.streams.push_back(PcmStream(2, 44100, 16));
    model.chunks = PatternChunks("00dc", 2, 10);
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    ASSERT_EQ(f.parser.GetStreamCount(), 2u);
    EXPECT_EQ(f.parser.GetAviFile().GetSkippedStreams(), 2u);
    EXPECT_EQ(f.parser.GetFirstAudioStreamNumber(), 1u);
    EXPECT_EQ(f.parser.GetAviFile().GetAudioStreams(), std::vector<uint32_t>{1});
    ASSERT_NE(f.parser.GetAudioFormat(), nullptr);
    EXPECT_EQ(f.parser.GetAudioFormat()->wFormatTag, 1);
}

TEST(ParserHeader, NamesFormatsAndPositionsAreRecorded) {
    AviModel model = VideoModel(2, 10);
    model.streams[0].name = "Camera";
    model.streams[0].format = BitmapInfoFormat(32, 16, 8, "", 512, std::vector<uint8_t>(1024, 0x5A));
    StreamModel audio = PcmStream(1, 8000, 8);
    audio.format = WaveFormat(1, 1, 8000, 8, {9, 9, 9, 9});  // cbSize 4 and four extra bytes
    model.streams.push_back(audio);
    const AviLayout layout = BuildAvi(model);
    ParsedBytes f(layout.bytes);
    ASSERT_EQ(f.parse, S_OK);

    const CZeAviStreamList* video = f.parser.GetStream(0);
    ASSERT_NE(video, nullptr);
    EXPECT_EQ(video->GetStreamName(), "Camera");
    EXPECT_EQ(video->GetID(), ZeOSAL::MakeFourCC("strl"));
    EXPECT_EQ(video->GetOffset(), FindText(layout.bytes, "strl") + 4);
    const CZeAviStreamFormat& format = video->GetFormat();
    ASSERT_EQ(format.GetFormatBytes(), 1064u);
    EXPECT_EQ(format.GetSize(), 1064u);
    EXPECT_EQ(static_cast<const uint8_t*>(format.GetFormat())[1063], 0x5A);
    EXPECT_EQ(format.GetBitmapInfoHeader()->biBitCount, 8);

    const CZeAviStreamFormat& wave = f.parser.GetStream(1)->GetFormat();
    ASSERT_EQ(wave.GetFormatBytes(), 22u);
    EXPECT_EQ(wave.GetWaveFormat()->cbSize, 4);
    const uint8_t* tail = static_cast<const uint8_t*>(wave.GetFormat()) + 18;
    EXPECT_EQ(tail[0] | tail[1] | tail[2] | tail[3], 0);  // the extension is not taken from the file
    EXPECT_EQ(f.parser.GetStream(1)->GetStreamName(), "");

    EXPECT_EQ(f.parser.GetMainHeader().GetID(), ZeOSAL::MakeFourCC("avih"));
    EXPECT_EQ(f.parser.GetAviFile().GetID(), ZeOSAL::MakeFourCC("hdrl"));
    EXPECT_EQ(f.parser.GetAviFile().GetOffset(), FindText(layout.bytes, "hdrl") + 4);
}

TEST(ParserHeader, AStreamCountBeyondTheListsEndsAtTheFilesEnd) {
    AviModel model = VideoModel(2, 10);
    model.streamCount = 0xFFFFFFFFu;
    ParsedBytes f(BuildAvi(model).bytes);
    EXPECT_EQ(f.parse, E_AVI_READ);
    EXPECT_EQ(f.parser.GetStreamCount(), 1u);  // the one real stream was filed before the walk ran out
}

TEST(ParserHeader, FormatBlocksLargerThanTheFileAreRefusedUnread) {
    for (const char* type : {"vids", "auds"}) {
        AviModel model = VideoModel(2, 10);
        if (std::string(type) == "auds") model.streams[0] = PcmStream(2, 48000, 16);
        std::vector<uint8_t> bytes = BuildAvi(model).bytes;
        const size_t strf = FindText(bytes, "strf");
        ASSERT_NE(strf, std::string::npos);
        PatchU32(bytes, strf + 4, 0xFFFFFF00u);
        ParsedBytes f(bytes);
        EXPECT_EQ(f.parse, E_AVI_READ) << type;
        const char* filler = std::string(type) == "vids" ? "FillVideoStreamFormatHeader" : "FillAudioStreamFormatHeader";
        EXPECT_EQ(CountReports(E_AVI_READ, filler), 1) << type;
    }
}

// A stream header renamed away, or a format or main header of size 0, each reported by its reader.
TEST(ParserHeader, MissingOrEmptyHeaderChunksAreReadFailures) {
    const std::vector<uint8_t> bytes = BuildAvi(VideoModel(2, 10)).bytes;
    struct Case {
        const char* chunk;
        bool rename;  // else the size becomes 0
        const char* method;
    };
    const Case cases[] = {{"strh", true, "ParseStreamHeaderChunk"},
                          {"strf", false, "ParseStreamFormatChunk"},
                          {"avih", false, "ParseHeaderChunk"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.chunk);
        std::vector<uint8_t> damaged = bytes;
        const size_t at = FindText(bytes, c.chunk);
        if (c.rename)
            std::memcpy(&damaged[at], "xxxx", 4);
        else
            PatchU32(damaged, at + 4, 0);
        ParsedBytes f(damaged);
        EXPECT_EQ(f.parse, E_AVI_READ);
        EXPECT_EQ(CountReports(E_AVI_READ, c.method), 1);
    }
}

TEST(ParserHeader, CutOffHeadersFailWithoutCrashing) {
    const std::vector<uint8_t> bytes = BuildAvi(VideoAndPcmModel(3, 64, 32)).bytes;
    const size_t movi = FindText(bytes, "movi");
    for (size_t cut = 12; cut < movi; cut += 7) {
        std::vector<uint8_t> part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(cut));
        ParsedBytes f(part);
        EXPECT_LT(f.parse, 0) << "cut at " << cut;
        EXPECT_FALSE(f.parser.IsParsed());
    }
}

// A stream header cut off by the end of a file of 64 KiB, the file layer's mapping granularity. Cut
// between two fields, the next field's read starts at the end of the file, where the layer maps
// nothing and the read fails in Read; cut inside a field, the short read is the header step's own.
TEST(ParserHeader, AStreamHeaderCutAtTheEndOfA64KiBFileFailsWhereItsFieldsMeetTheEnd) {
    constexpr size_t kFileSize = 0x10000;
    const struct {
        size_t intoBody;  // bytes of the 'strh' body left in the file
        const char* method;
    } cases[] = {{4, "Read"}, {12, "Read"}, {14, "Read"}, {48, "Read"}, {6, "ParseStreamHeaderChunk"},
                 {15, "ParseStreamHeaderChunk"}, {50, "Read"}, {51, "ParseStreamHeaderChunk"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.intoBody);
        AviModel model = VideoModel(1, 8);
        const size_t body = FindText(BuildAvi(model).bytes, "strh") + 8;
        // A JUNK chunk between the form type and the header list moves the body to where the cut lands.
        ChunkModel junk;
        junk.ckid = "JUNK";
        junk.data.assign(kFileSize - c.intoBody - body - 8, 0);
        junk.pad = false;
        junk.indexed = false;
        model.beforeHeader = {junk};
        model.truncateAt = kFileSize;
        const std::vector<uint8_t> bytes = BuildAvi(model).bytes;
        ASSERT_EQ(bytes.size(), kFileSize);
        ASSERT_EQ(FindText(bytes, "strh") + 8 + c.intoBody, kFileSize);
        ParsedBytes f(bytes);
        EXPECT_EQ(f.parse, E_AVI_READ);
        // The searches for the list's chunks walk past the end before the header is read, and their
        // reads there fail too; the parse ends with the report of the header's own read.
        const std::vector<std::string> reports = GetReportList();
        ASSERT_FALSE(reports.empty());
        EXPECT_NE(reports.back().find(std::string("### CZeAviFileParser::") + c.method + " ###"), std::string::npos)
            << reports.back();
    }
}

}  // namespace
}  // namespace zetest
