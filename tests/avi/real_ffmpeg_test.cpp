// Every ffmpeg-made file against ffprobe: the parser's per-stream indexes must list the packets
// ffprobe finds (count, data position, size, key flag), GetFrame must return exactly each packet
// and GetSample, read sequentially or from any position, the PCM that the audio packets make up
// when joined. Where the reader deliberately differs from ffmpeg (compressed audio left out, PCM
// packets cut at 1024 sample frames by ffmpeg, stream lengths repaired) the difference must be
// exactly that rule.
#include <gtest/gtest.h>

#include "tests/avi/real_parsed_file.h"

namespace zetest {
namespace {

class RealFfmpeg : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override
    {
        std::string whyNot;
        if (!m.Load(GetParam(), &whyNot))
            GTEST_SKIP() << whyNot;
        info = FindMaterial(GetParam());
        f = std::make_unique<ParsedFile>(m.path);
        ASSERT_TRUE(f->Ok()) << std::hex << f->openResult << " " << f->parseResult;
    }

    Material m;
    MaterialInfo info;
    std::unique_ptr<ParsedFile> f;
};

using RealFfmpegVideo = RealFfmpeg;
using RealFfmpegPcm = RealFfmpeg;

TEST_P(RealFfmpeg, ClassifiesStreamsAsFfprobeDoes)
{
    CZeAviFileParser& p = f->parser;
    EXPECT_EQ(p.GetFirstVideoStreamNumber() != CZeAviFileParser::kNoStream, info.hasVideo);
    EXPECT_EQ(p.GetFirstAudioStreamNumber() != CZeAviFileParser::kNoStream, info.hasPcm);
    // Compressed audio is left out of the record tree, and only that.
    EXPECT_EQ(p.GetAviFile().GetSkippedStreams(), info.hasCompressedAudio ? 1u : 0u);
    EXPECT_EQ(p.GetStreamCount() + p.GetAviFile().GetSkippedStreams(), m.probe.size());
    if (info.hasVideo) {
        EXPECT_EQ(p.IsValidAVIFile(), 0);
    }
}

// The index, the length (never above the indexed frames) and every frame, forwards and then
// backwards as a seek from the end reads them.
TEST_P(RealFfmpegVideo, IsFfprobesPackets)
{
    const ProbeStream* video = m.FirstOfType("video");
    ASSERT_NE(video, nullptr);
    ExpectRowsArePackets(f->Index(f->parser.GetFirstVideoStreamNumber()), video->packets);
    ASSERT_EQ(f->parser.GetVideoFrameCount(), video->packets.size());
    ASSERT_NE(f->parser.GetVideoStreamHeader(), nullptr);
    EXPECT_EQ(f->parser.GetVideoStreamHeader()->GetLength(), video->packets.size());

    std::vector<std::vector<uint8_t>> frames = m.Packets(*video);
    ExpectFrames(*f, frames);
    std::vector<uint8_t> buffer(f->parser.GetMaxVideoFrameSize());
    for (uint64_t i = frames.size(); i-- > 0;) {
        uint64_t bytesRead = 0;
        ASSERT_EQ(f->Frame(buffer, i, &bytesRead), 0);
        ASSERT_EQ(bytesRead, frames[i].size());
        ASSERT_TRUE(std::equal(frames[i].begin(), frames[i].end(), buffer.begin())) << "frame " << i;
    }
}

// ffprobe cuts each PCM chunk into packets of at most 1024 sample frames; the reader keeps one entry
// per chunk. So every entry must be exactly covered by consecutive packets that start at its data.
// The audio length either stays as stored or, when it disagrees with the video by more than a
// second, becomes the indexed bytes over the block size; ffmpeg's files agree, so both views meet.
TEST_P(RealFfmpegPcm, EntriesAreFfprobesPacketsJoinedPerChunk)
{
    const ProbeStream* audio = m.FirstOfType("audio");
    ASSERT_NE(audio, nullptr);
    const WAVEFORMATEX* wave = f->parser.GetAudioFormat();
    ASSERT_NE(wave, nullptr);
    ASSERT_GT(wave->nBlockAlign, 0);
    const uint32_t largestPacket = 1024u * wave->nBlockAlign;

    const std::vector<IndexRow> rows = f->Index(f->parser.GetFirstAudioStreamNumber());
    size_t next = 0;
    uint64_t bytes = 0;
    for (size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE("audio entry " + std::to_string(i));
        uint64_t covered = 0;
        while (covered < rows[i].size && next < audio->packets.size()) {
            const ProbePacket& packet = audio->packets[next++];
            EXPECT_EQ(static_cast<uint64_t>(packet.pos), rows[i].position + covered);
            EXPECT_LE(packet.size, largestPacket);
            covered += packet.size;
        }
        EXPECT_EQ(covered, rows[i].size);
    }
    for (const ProbePacket& packet : audio->packets)
        bytes += packet.size;
    EXPECT_EQ(next, audio->packets.size()) << "packets beyond the indexed chunks";
    EXPECT_EQ(f->parser.GetAudioStreamHeader()->GetLength(), bytes / wave->nBlockAlign);
}

// Sequential reads of an odd number of sample frames (ending in the middle of chunks), reads from
// forward and backward jumps across chunk boundaries, and single chunk blocks after a skip.
TEST_P(RealFfmpegPcm, ReadsGiveThePcmStream)
{
    const WAVEFORMATEX* wave = f->parser.GetAudioFormat();
    ASSERT_NE(wave, nullptr);
    const std::vector<uint8_t> pcm = m.Joined("audio");
    const uint32_t block = wave->nBlockAlign;
    const uint64_t frames = pcm.size() / block;
    ASSERT_GT(frames, 4000u);

    const std::vector<uint8_t> got = f->PcmInSteps(frames, block, 1531);
    ASSERT_EQ(got.size(), frames * block);
    EXPECT_TRUE(std::equal(got.begin(), got.end(), pcm.begin())) << "the PCM stream differs";

    const uint64_t starts[] = {frames / 2, 1, frames - 1000, 0, 1023, 1024, 1025, frames / 3, 7};
    for (uint64_t start : starts) {
        SCOPED_TRACE("sample frame " + std::to_string(start));
        uint64_t position = start;
        uint64_t count = 999 * block;
        std::vector<uint8_t> buffer(count, 0xEE);
        ASSERT_EQ(f->parser.GetSample(&position, buffer.data(), &count), 0);
        EXPECT_TRUE(std::equal(buffer.begin(), buffer.end(), pcm.begin() + static_cast<ptrdiff_t>(start * block)));
    }

    const std::vector<IndexRow> rows = f->Index(f->parser.GetFirstAudioStreamNumber());
    ASSERT_FALSE(rows.empty());
    std::vector<uint8_t> buffer(f->parser.GetMaxAudioChunkSize());
    for (uint64_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE("block " + std::to_string(i));
        uint64_t blockNumber = i;
        int32_t skip = static_cast<int32_t>(i % 3);  // what remains after the first bytes
        const uint64_t n = f->parser.GetOneAudioBlock(buffer.data(), &blockNumber, &skip);
        ASSERT_EQ(n, rows[i].size - static_cast<uint32_t>(skip));
        EXPECT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(n),
                               m.file.begin() + static_cast<ptrdiff_t>(rows[i].position + skip)));
    }
}

std::string ParamName(const ::testing::TestParamInfo<std::string>& p) { return p.param; }

INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealFfmpeg, ::testing::ValuesIn(SmallMaterials([](const MaterialInfo&) { return true; })),
                         ParamName);
INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealFfmpegVideo,
                         ::testing::ValuesIn(SmallMaterials([](const MaterialInfo& m) { return m.hasVideo; })), ParamName);
INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealFfmpegPcm,
                         ::testing::ValuesIn(SmallMaterials([](const MaterialInfo& m) { return m.hasPcm; })), ParamName);

// Bit 7 of the flags selects the second video stream of a file that has two.
TEST(RealSecondVideo, FlagBit7ReadsTheSecondStreamsPackets)
{
    Material m;
    std::string whyNot;
    if (!m.Load("two_video_mjpeg", &whyNot))
        GTEST_SKIP() << whyNot;
    ASSERT_EQ(m.probe.size(), 2u);
    ParsedFile f(m.path);
    ASSERT_TRUE(f.Ok());
    ASSERT_NE(f.parser.GetSecondVideoStreamNumber(), CZeAviFileParser::kNoStream);
    for (uint8_t flags : {uint8_t{0x80}, uint8_t{0x00}}) {
        SCOPED_TRACE("flags " + std::to_string(flags));
        ExpectFrames(f, m.Packets(m.probe[flags ? 1 : 0]), flags);
    }
}

}  // namespace
}  // namespace zetest
