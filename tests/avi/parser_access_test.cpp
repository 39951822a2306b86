// Frames and audio out of a parsed file: tolerance past the end, drop frames, the second video
// stream, the process-wide last frame size, audio by sample position with its read cursor, single
// audio blocks, and the length repairs at the end of the parse.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/avi/parser_test_support.h"

namespace zetest {
namespace {

struct FrameResult {
    HRESULT hr = 0;
    uint64_t bytesRead = 0;
    std::vector<uint8_t> bytes;
};

FrameResult ReadFrame(CZeAviFileParser& parser, uint64_t frame, uint8_t flags = 0, int16_t tolerance = 0,
                      size_t bufferSize = 0) {
    FrameResult r;
    r.bytes.assign(bufferSize ? bufferSize : std::max<size_t>(parser.GetMaxVideoFrameSize(), 1), 0xEE);
    r.hr = parser.GetFrame(r.bytes.data(), &frame, &r.bytesRead, &flags, &tolerance);
    return r;
}

std::vector<uint8_t> Data(const AviModel& model, size_t chunk) { return model.chunks[chunk].data; }

std::vector<uint8_t> Prefix(const std::vector<uint8_t>& bytes, uint64_t n) {
    return std::vector<uint8_t>(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
}

TEST(ParserAccess, FramesComeBackAsStored) {
    const AviModel model = VideoAndPcmModel(5, 77, 40);
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_EQ(f.parser.GetMaxVideoFrameSize(), 77u);
    for (uint64_t i = 0; i < 5; ++i) {
        const FrameResult r = ReadFrame(f.parser, i);
        ASSERT_EQ(r.hr, S_OK);
        EXPECT_EQ(r.bytesRead, 77u);
        EXPECT_EQ(Prefix(r.bytes, 77), Data(model, i * 2)) << i;
    }
    EXPECT_EQ(CZeAviFileParser::GetLastFrameSize(), 77u);
}

TEST(ParserAccess, RequestsPastTheEndWithinToleranceGetABlankFrame) {
    const AviModel model = VideoModel(4, 64);
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    ASSERT_EQ(ReadFrame(f.parser, 3).hr, S_OK);

    const FrameResult blank = ReadFrame(f.parser, 4, 0, 1);
    EXPECT_EQ(blank.hr, S_OK);
    EXPECT_EQ(blank.bytesRead, ~uint64_t{0});
    EXPECT_TRUE(std::all_of(blank.bytes.begin(), blank.bytes.end(), [](uint8_t b) { return b == 0; }));

    SetErrorContext("");
    EXPECT_EQ(ReadFrame(f.parser, 4 + 5, 0, 1).hr, E_AVI_SEEK);
    EXPECT_EQ(CountReports(E_AVI_SEEK, "Seek"), 1);
    EXPECT_EQ(ReadFrame(f.parser, 4, 0, -1).hr, E_AVI_SEEK);  // a negative tolerance reaches nothing
    EXPECT_EQ(ReadFrame(f.parser, 6, 0, 3).hr, S_OK);
}

// The blank frame's size is shared by every parser of the process; it is never larger than the
// frames of the file asking, so the caller's buffer holds it.
TEST(ParserAccess, TheSharedLastFrameSizeNeverOverrunsASmallerFilesBuffer) {
    const AviModel big = VideoModel(2, 5000);
    const AviModel small = VideoModel(2, 16);
    ParsedBytes a(BuildAvi(big).bytes);
    ParsedBytes b(BuildAvi(small).bytes);
    ASSERT_EQ(a.parse, S_OK);
    ASSERT_EQ(b.parse, S_OK);
    ASSERT_EQ(ReadFrame(a.parser, 0).hr, S_OK);
    EXPECT_EQ(CZeAviFileParser::GetLastFrameSize(), 5000u);
    const FrameResult blank = ReadFrame(b.parser, 2, 0, 1, 32);
    EXPECT_EQ(blank.hr, S_OK);
    EXPECT_EQ(std::count(blank.bytes.begin(), blank.bytes.end(), 0), 16);
    EXPECT_EQ(blank.bytes[16], 0xEE);
}

TEST(ParserAccess, DropFramesRepeatTheLastFrameRead) {
    for (bool odml : {false, true}) {
        // Frame 0 stays real: an idx1 drop entry (offset 0) ahead of every stored frame would be
        // taken as the first video chunk when the idx1 base is decided.
        AviModel model = VideoModel(5, 48, odml ? Idx1::None : Idx1::FromMovi);
        if (odml) model.streams[0].superIndex = SuperIndex::Full;
        model.chunks[1].drop = true;
        model.chunks[3].drop = true;
        ParsedBytes f(BuildAvi(model).bytes);
        ASSERT_EQ(f.parse, S_OK) << odml;
        ASSERT_EQ(f.parser.GetVideoFrameCount(), 5u);

        SetErrorContext("");
        EXPECT_EQ(ReadFrame(f.parser, 1).hr, E_AVI_SEEK) << "nothing read yet on this stream";
        ASSERT_EQ(ReadFrame(f.parser, 2).hr, S_OK);
        const FrameResult again = ReadFrame(f.parser, 3);
        ASSERT_EQ(again.hr, S_OK);
        EXPECT_EQ(again.bytesRead, 48u);
        EXPECT_EQ(Prefix(again.bytes, 48), Data(model, 2)) << odml;
        EXPECT_EQ(Prefix(ReadFrame(f.parser, 4).bytes, 48), Data(model, 4));
        EXPECT_EQ(Prefix(ReadFrame(f.parser, 1).bytes, 48), Data(model, 4)) << odml;
        EXPECT_EQ(Prefix(ReadFrame(f.parser, 0).bytes, 48), Data(model, 0)) << odml;
    }
}

TEST(ParserAccess, BitSevenSelectsTheSecondVideoStreamWhenThereIsOne) {
    AviModel two = VideoModel(0, 0);
    two.streams.push_back(VideoStream("DIB ", 32, 16));
    const std::vector<ChunkModel> first = PatternChunks("00dc", 3, 20, 1);
    const std::vector<ChunkModel> second = PatternChunks("01dc", 3, 30, 2);
    for (size_t i = 0; i < 3; ++i) {
        two.chunks.push_back(first[i]);
        two.chunks.push_back(second[i]);
    }
    ParsedBytes f(BuildAvi(two).bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_EQ(f.parser.GetMaxVideoFrameSize(), 30u);
    const FrameResult a = ReadFrame(f.parser, 1, 0x80);
    ASSERT_EQ(a.hr, S_OK);
    EXPECT_EQ(a.bytesRead, 30u);
    EXPECT_EQ(Prefix(a.bytes, 30), second[1].data);
    EXPECT_EQ(Prefix(ReadFrame(f.parser, 1, 0x7F).bytes, 20), first[1].data);

    const AviModel one = VideoModel(3, 20);
    ParsedBytes g(BuildAvi(one).bytes);
    ASSERT_EQ(g.parse, S_OK);
    EXPECT_EQ(Prefix(ReadFrame(g.parser, 1, 0x80).bytes, 20), Data(one, 1));
}

TEST(ParserAccess, FramesNeedAVideoIndexAndABuffer) {
    AviModel audioOnly;
    audioOnly.streams = {PcmStream(2, 48000, 16)};
    audioOnly.chunks = PatternChunks("00wb", 2, 64);
    ParsedBytes f(BuildAvi(audioOnly).bytes);
    ASSERT_EQ(f.parse, S_OK);
    SetErrorContext("");
    EXPECT_EQ(ReadFrame(f.parser, 0).hr, E_AVI_STREAMINDEX);
    EXPECT_EQ(CountReports(E_AVI_STREAMINDEX, "GetFrame"), 1);
    uint64_t frame = 0, bytesRead = 0;
    uint8_t flags = 0;
    int16_t tolerance = 0;
    EXPECT_EQ(f.parser.GetFrame(nullptr, &frame, &bytesRead, &flags, &tolerance), E_POINTER);

    CZeAviFileParser idle;
    EXPECT_EQ(ReadFrame(idle, 0).hr, E_AVI_STREAMINDEX);
}

std::vector<uint8_t> AllPcm(const AviModel& model) {
    std::vector<uint8_t> pcm;
    for (const ChunkModel& c : model.chunks) {
        if (c.ckid == "01wb") pcm.insert(pcm.end(), c.data.begin(), c.data.end());
    }
    return pcm;
}

std::vector<uint8_t> Sample(CZeAviFileParser& parser, uint64_t position, uint64_t bytes, HRESULT* hr = nullptr) {
    std::vector<uint8_t> buffer(bytes, 0xEE);
    const HRESULT result = parser.GetSample(&position, buffer.data(), &bytes);
    if (hr != nullptr) *hr = result;
    return buffer;
}

TEST(ParserAccess, AudioIsReadBySampleFrameAcrossChunks) {
    const AviModel model = VideoAndPcmModel(8, 10, 1000);  // 16-bit stereo: 4 bytes a sample frame
    const std::vector<uint8_t> pcm = AllPcm(model);
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    f.parser.PrepareAudioRead();

    HRESULT hr = E_FAIL;
    // Sample frame 1000 is stream byte 4000, the start of the fifth chunk.
    EXPECT_EQ(Sample(f.parser, 1000, 1500, &hr), std::vector<uint8_t>(pcm.begin() + 4000, pcm.begin() + 5500));
    EXPECT_EQ(hr, S_OK);
    // Sequential pieces from the cursor, then an earlier position found by search.
    EXPECT_EQ(Sample(f.parser, 1375, 700), std::vector<uint8_t>(pcm.begin() + 5500, pcm.begin() + 6200));
    EXPECT_EQ(Sample(f.parser, 1550, 1800), std::vector<uint8_t>(pcm.begin() + 6200, pcm.end()));
    EXPECT_EQ(Sample(f.parser, 1, 2999), std::vector<uint8_t>(pcm.begin() + 4, pcm.begin() + 3003));
    EXPECT_EQ(Sample(f.parser, 0, 4), std::vector<uint8_t>(pcm.begin(), pcm.begin() + 4));

    // What lies beyond the audio stays silent.
    std::vector<uint8_t> tail = Sample(f.parser, 1900, 1000);
    EXPECT_EQ(std::vector<uint8_t>(tail.begin(), tail.begin() + 400), std::vector<uint8_t>(pcm.begin() + 7600, pcm.end()));
    EXPECT_TRUE(std::all_of(tail.begin() + 400, tail.end(), [](uint8_t b) { return b == 0; }));

    uint64_t inEntry = 0;
    uint64_t position = 4321;
    EXPECT_EQ(f.parser.GetAudioIndex(&position, &inEntry), 4u);
    EXPECT_EQ(inEntry, 321u);
    position = 8000;
    EXPECT_EQ(f.parser.GetAudioIndex(&position, &inEntry), CZeAviFileParser::kNoEntry);
}

TEST(ParserAccess, AudioPastTheEndIsSilenceWithoutAFailure) {
    const AviModel model = VideoAndPcmModel(2, 10, 100);
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    HRESULT hr = E_FAIL;
    const std::vector<uint8_t> past = Sample(f.parser, 1u << 30, 64, &hr);
    EXPECT_EQ(hr, S_OK);
    EXPECT_TRUE(std::all_of(past.begin(), past.end(), [](uint8_t b) { return b == 0; }));
    uint64_t position = 0;
    uint64_t zero = 0;
    uint8_t untouched = 0xEE;
    EXPECT_EQ(f.parser.GetSample(&position, &untouched, &zero), S_OK);
    EXPECT_EQ(untouched, 0xEE);
}

TEST(ParserAccess, AudioNeedsAnAudioStreamAndEntriesOfFourBytes) {
    ParsedBytes video(BuildAvi(VideoModel(2, 10)).bytes);
    HRESULT hr = S_OK;
    SetErrorContext("");
    const std::vector<uint8_t> silent = Sample(video.parser, 0, 16, &hr);
    EXPECT_EQ(hr, E_FAIL);
    EXPECT_EQ(CountReports(E_FAIL, "GetSample"), 1);
    EXPECT_TRUE(std::all_of(silent.begin(), silent.end(), [](uint8_t b) { return b == 0; }));

    AviModel tiny = VideoAndPcmModel(2, 10, 2);
    ParsedBytes f(BuildAvi(tiny).bytes);
    ASSERT_EQ(f.parse, S_OK);
    Sample(f.parser, 0, 4, &hr);
    EXPECT_EQ(hr, E_FAIL);
}

TEST(ParserAccess, SingleAudioBlocksHonourTheirSkip) {
    const AviModel model = VideoAndPcmModel(3, 10, 200);
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_EQ(f.parser.GetMaxAudioChunkSize(), 200u);
    std::vector<uint8_t> buffer(200, 0xEE);
    uint64_t block = 1;
    int32_t skip = 50;
    ASSERT_EQ(f.parser.GetOneAudioBlock(buffer.data(), &block, &skip), 150u);
    EXPECT_EQ(std::vector<uint8_t>(buffer.begin(), buffer.begin() + 150),
              std::vector<uint8_t>(model.chunks[3].data.begin() + 50, model.chunks[3].data.end()));

    SetErrorContext("");
    skip = 201;
    EXPECT_EQ(f.parser.GetOneAudioBlock(buffer.data(), &block, &skip), 0u);
    skip = -1;
    EXPECT_EQ(f.parser.GetOneAudioBlock(buffer.data(), &block, &skip), 0u);
    EXPECT_EQ(CountReports(E_INVALIDARG, "GetOneAudioBlock"), 2);
    skip = 0;
    block = 3;
    EXPECT_EQ(f.parser.GetOneAudioBlock(buffer.data(), &block, &skip), 0u);
    EXPECT_EQ(CountReports(E_AVI_SEEK, "GetOneAudioBlock"), 1);

    ParsedBytes video(BuildAvi(VideoModel(2, 10)).bytes);
    block = 0;
    EXPECT_EQ(video.parser.GetOneAudioBlock(buffer.data(), &block, &skip), 0u);
    EXPECT_EQ(CountReports(E_FAIL, "GetOneAudioBlock"), 1);

    // An entry placed past the end of the file: what remains of it after the whole entry is
    // skipped is nothing, read as nothing without a failure; anything more fails as a read.
    const AviLayout layout = BuildAvi(model);
    std::vector<uint8_t> bytes = layout.bytes;
    PatchU32(bytes, layout.idx1Pos + 8 + 16 * 1 + 8, 0x7FFFFF00u);  // entry 1: the first "01wb"
    ParsedBytes far(bytes);
    ASSERT_EQ(far.parse, S_OK);
    SetErrorContext("");
    block = 0;
    skip = 200;
    EXPECT_EQ(far.parser.GetOneAudioBlock(buffer.data(), &block, &skip), 0u);
    EXPECT_TRUE(GetReportList().empty());
    skip = 100;
    EXPECT_EQ(far.parser.GetOneAudioBlock(buffer.data(), &block, &skip), 0u);
    EXPECT_EQ(CountReports(E_AVI_READ, "GetOneAudioBlock"), 1);
    EXPECT_EQ(GetReportList().size(), 1u);

    // An entry claiming nearly 4 GiB: the largest block callers size their buffers by stays
    // within the file, and a read into such a buffer ends at the end of the file.
    bytes = layout.bytes;
    const uint64_t lastAudio = layout.idx1Pos + 8 + 16 * 5;  // entry 5: the third "01wb"
    PatchU32(bytes, lastAudio + 12, 0xFFFFFF00u);
    ParsedBytes huge(bytes);
    ASSERT_EQ(huge.parse, S_OK);
    const uint32_t largest = huge.parser.GetMaxAudioChunkSize();
    EXPECT_LE(largest, huge.parser.GetFileSize());
    uint64_t position = 0;
    huge.parser.LookupEntry(huge.parser.GetFirstAudioStreamNumber(), 2, &position, nullptr);
    std::vector<uint8_t> chunk(largest, 0xEE);
    block = 2;
    skip = 0;
    EXPECT_EQ(huge.parser.GetOneAudioBlock(chunk.data(), &block, &skip), huge.parser.GetFileSize() - position);
    EXPECT_EQ(std::vector<uint8_t>(chunk.begin(), chunk.begin() + 200), model.chunks[5].data);
}

TEST(ParserAccess, LengthsAreRepairedAgainstTheIndexes) {
    // 25 frames a second, 10 frames: 0.4 s of video.
    AviModel model = VideoAndPcmModel(10, 10, 1920);  // 10 x 480 sample frames = 0.1 s at 48 kHz
    model.streams[0].length = 50;                   // more frames than indexed
    model.streams[1].length = 480000;               // claims 10 s of audio
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_EQ(f.parser.GetVideoStreamHeader()->GetLength(), 10u);
    EXPECT_EQ(f.parser.GetAudioStreamHeader()->GetLength(), 4800u);  // recounted from the stored bytes

    model.streams[1].length = 48000;  // 1 s: within a second of the video, kept as it stands
    ParsedBytes g(BuildAvi(model).bytes);
    ASSERT_EQ(g.parse, S_OK);
    EXPECT_EQ(g.parser.GetAudioStreamHeader()->GetLength(), 48000u);

    model.streams[1].format = WaveFormat(1, 0, 48000, 16);  // no channels: nothing to divide by
    model.streams[1].length = 480000;
    ParsedBytes h(BuildAvi(model).bytes);
    ASSERT_EQ(h.parse, S_OK);
    EXPECT_EQ(h.parser.GetAudioStreamHeader()->GetLength(), 480000u);
}

}  // namespace
}  // namespace zetest
