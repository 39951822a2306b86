// Every ffmpeg-made file against ffprobe: the parser's per-stream indexes must list the packets
// ffprobe finds (count, data position, size, key flag). Where the reader deliberately differs from
// ffmpeg (compressed audio left out, PCM packets cut at 1024 sample frames by ffmpeg, stream
// lengths repaired) the difference must be exactly that rule.
#include <gtest/gtest.h>

#include <numeric>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_ffprobe_packets.h"

namespace zetest {
namespace {

std::vector<std::string> SmallMaterialNames(bool (*wanted)(const MaterialInfo&))
{
    std::vector<std::string> names;
    for (const MaterialInfo& m : MaterialTable())
        if (!m.large && wanted(m))
            names.push_back(m.name);
    return names;
}

const ProbeStream* FirstOfType(const std::vector<ProbeStream>& streams, const std::string& type)
{
    for (const ProbeStream& s : streams)
        if (s.codecType == type)
            return &s;
    return nullptr;
}

uint64_t TotalBytes(const std::vector<ProbePacket>& packets)
{
    return std::accumulate(packets.begin(), packets.end(), uint64_t{0},
                           [](uint64_t sum, const ProbePacket& p) { return sum + p.size; });
}

class RealIndex : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override
    {
        std::string whyNot;
        path = MaterialPath(GetParam(), &whyNot);
        if (path.empty())
            GTEST_SKIP() << whyNot;
        info = FindMaterial(GetParam());
        probe = ProbeFile(path);
    }

    std::string path;
    MaterialInfo info;
    std::vector<ProbeStream> probe;
};

using RealVideoIndex = RealIndex;
using RealPcmIndex = RealIndex;

TEST_P(RealIndex, ParsesAndClassifiesStreamsAsFfprobeDoes)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok()) << std::hex << f.openResult << " " << f.parseResult;
    CZeAviFileParser& p = f.parser;
    EXPECT_EQ(p.GetFirstVideoStreamNumber() != CZeAviFileParser::kNoStream, info.hasVideo);
    EXPECT_EQ(p.GetFirstAudioStreamNumber() != CZeAviFileParser::kNoStream, info.hasPcm);
    // Compressed audio is left out of the record tree, and only that.
    EXPECT_EQ(p.GetAviFile().GetSkippedStreams(), info.hasCompressedAudio ? 1u : 0u);
    EXPECT_EQ(p.GetStreamCount() + p.GetAviFile().GetSkippedStreams(), probe.size());
    if (info.hasVideo) {
        EXPECT_EQ(p.IsValidAVIFile(), 0);
    }
}

TEST_P(RealVideoIndex, VideoIndexListsFfprobesPackets)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const ProbeStream* video = FirstOfType(probe, "video");
    ASSERT_NE(video, nullptr);
    const std::vector<IndexRow> rows = f.Index(f.parser.GetFirstVideoStreamNumber());
    ASSERT_EQ(rows.size(), video->packets.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        EXPECT_EQ(static_cast<int64_t>(rows[i].position), video->packets[i].pos);
        EXPECT_EQ(rows[i].size, video->packets[i].size);
        EXPECT_EQ((rows[i].flags & 0x10) != 0, video->packets[i].key);
    }
    EXPECT_EQ(f.parser.GetVideoFrameCount(), video->packets.size());
}

TEST_P(RealVideoIndex, VideoLengthIsNeverAboveTheIndexedFrames)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    ASSERT_NE(f.parser.GetVideoStreamHeader(), nullptr);
    EXPECT_EQ(f.parser.GetVideoStreamHeader()->GetLength(), FirstOfType(probe, "video")->packets.size());
}

// ffprobe cuts each PCM chunk into packets of at most 1024 sample frames; the reader keeps one entry
// per chunk. So every entry must be exactly covered by consecutive packets that start at its data.
TEST_P(RealPcmIndex, PcmEntriesAreFfprobesPacketsJoinedPerChunk)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const ProbeStream* audio = FirstOfType(probe, "audio");
    ASSERT_NE(audio, nullptr);
    const WAVEFORMATEX* wave = f.parser.GetAudioFormat();
    ASSERT_NE(wave, nullptr);
    ASSERT_GT(wave->nBlockAlign, 0);
    const uint32_t largestPacket = 1024u * wave->nBlockAlign;

    const std::vector<IndexRow> rows = f.Index(f.parser.GetFirstAudioStreamNumber());
    size_t next = 0;
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
    EXPECT_EQ(next, audio->packets.size()) << "packets beyond the indexed chunks";
}

// The audio length either stays as stored or, when it disagrees with the video by more than a
// second, becomes the indexed bytes over the block size; ffmpeg's files agree, so both views meet.
TEST_P(RealPcmIndex, PcmLengthMatchesTheStoredSampleFrames)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const WAVEFORMATEX* wave = f.parser.GetAudioFormat();
    ASSERT_NE(wave, nullptr);
    const uint64_t bytes = TotalBytes(FirstOfType(probe, "audio")->packets);
    EXPECT_EQ(f.parser.GetAudioStreamHeader()->GetLength(), bytes / wave->nBlockAlign);
}

std::string ParamName(const ::testing::TestParamInfo<std::string>& p) { return p.param; }

INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealIndex, ::testing::ValuesIn(SmallMaterialNames([](const MaterialInfo&) { return true; })),
                         ParamName);
INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealVideoIndex,
                         ::testing::ValuesIn(SmallMaterialNames([](const MaterialInfo& m) { return m.hasVideo; })), ParamName);
INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealPcmIndex,
                         ::testing::ValuesIn(SmallMaterialNames([](const MaterialInfo& m) { return m.hasPcm; })), ParamName);

}  // namespace
}  // namespace zetest
