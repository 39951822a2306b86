// Bytes handed out by the parser for ffmpeg-made files: every GetFrame must return exactly the
// packet ffprobe locates, and GetSample, read sequentially or from any position, must give the PCM
// stream that ffprobe's audio packets make up when joined.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_ffprobe_packets.h"
#include "tests/fixtures/ze_temp_file.h"

namespace zetest {
namespace {

std::vector<std::string> Names(bool (*wanted)(const MaterialInfo&))
{
    std::vector<std::string> names;
    for (const MaterialInfo& m : MaterialTable())
        if (!m.large && wanted(m))
            names.push_back(m.name);
    return names;
}

std::vector<uint8_t> Slice(const std::vector<uint8_t>& file, uint64_t pos, uint64_t size)
{
    if (pos + size > file.size())
        throw std::out_of_range("packet beyond the end of the file");
    return std::vector<uint8_t>(file.begin() + static_cast<ptrdiff_t>(pos),
                                file.begin() + static_cast<ptrdiff_t>(pos + size));
}

// The joined payload of every packet of the first stream of `type`.
std::vector<uint8_t> JoinedPackets(const std::vector<ProbeStream>& probe, const std::vector<uint8_t>& file,
                                   const std::string& type)
{
    std::vector<uint8_t> joined;
    for (const ProbeStream& s : probe) {
        if (s.codecType != type)
            continue;
        for (const ProbePacket& p : s.packets) {
            const std::vector<uint8_t> bytes = Slice(file, static_cast<uint64_t>(p.pos), p.size);
            joined.insert(joined.end(), bytes.begin(), bytes.end());
        }
        break;
    }
    return joined;
}

class RealMaterial : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override
    {
        std::string whyNot;
        path = MaterialPath(GetParam(), &whyNot);
        if (path.empty())
            GTEST_SKIP() << whyNot;
        probe = ProbeFile(path);
        file = ReadWholeFile(path);
    }

    std::string path;
    std::vector<ProbeStream> probe;
    std::vector<uint8_t> file;
};

using RealFrames = RealMaterial;
using RealSamples = RealMaterial;

TEST_P(RealFrames, EveryFrameIsFfprobesPacket)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const ProbeStream* video = nullptr;
    for (const ProbeStream& s : probe)
        if (!video && s.codecType == "video")
            video = &s;
    ASSERT_NE(video, nullptr);
    ASSERT_EQ(f.parser.GetVideoFrameCount(), video->packets.size());

    std::vector<uint8_t> buffer(f.parser.GetMaxVideoFrameSize());
    for (uint64_t i = 0; i < video->packets.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        const ProbePacket& packet = video->packets[i];
        uint64_t frame = i, bytesRead = 0;
        uint8_t flags = 0;
        int16_t tolerance = 0;
        ASSERT_EQ(f.parser.GetFrame(buffer.data(), &frame, &bytesRead, &flags, &tolerance), 0);
        ASSERT_EQ(bytesRead, packet.size);
        ASSERT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(packet.size),
                               file.begin() + packet.pos));
    }
    // Backwards, as a seek from the end does: the same bytes again.
    for (uint64_t i = video->packets.size(); i-- > 0;) {
        uint64_t frame = i, bytesRead = 0;
        uint8_t flags = 0;
        int16_t tolerance = 0;
        ASSERT_EQ(f.parser.GetFrame(buffer.data(), &frame, &bytesRead, &flags, &tolerance), 0);
        ASSERT_EQ(bytesRead, video->packets[i].size);
        ASSERT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(bytesRead),
                               file.begin() + video->packets[i].pos)) << "frame " << i;
    }
}

TEST_P(RealSamples, SequentialReadsGiveThePcmStream)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const WAVEFORMATEX* wave = f.parser.GetAudioFormat();
    ASSERT_NE(wave, nullptr);
    const std::vector<uint8_t> pcm = JoinedPackets(probe, file, "audio");
    ASSERT_FALSE(pcm.empty());
    const uint32_t block = wave->nBlockAlign;
    const uint64_t frames = pcm.size() / block;
    // An odd number of sample frames per call, so reads end in the middle of chunks.
    const uint64_t step = 1531;
    std::vector<uint8_t> got;
    for (uint64_t pos = 0; pos < frames; pos += step) {
        uint64_t position = pos;
        uint64_t count = std::min(step, frames - pos) * block;
        std::vector<uint8_t> buffer(count, 0xEE);
        ASSERT_EQ(f.parser.GetSample(&position, buffer.data(), &count), 0) << "at sample frame " << pos;
        got.insert(got.end(), buffer.begin(), buffer.end());
    }
    ASSERT_EQ(got.size(), frames * block);
    EXPECT_TRUE(std::equal(got.begin(), got.end(), pcm.begin())) << "the PCM stream differs";
}

TEST_P(RealSamples, ReadsFromAnyPositionGiveThatPartOfThePcmStream)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const WAVEFORMATEX* wave = f.parser.GetAudioFormat();
    ASSERT_NE(wave, nullptr);
    const std::vector<uint8_t> pcm = JoinedPackets(probe, file, "audio");
    const uint32_t block = wave->nBlockAlign;
    const uint64_t frames = pcm.size() / block;
    ASSERT_GT(frames, 4000u);
    // Forwards and backwards jumps, chunk boundaries included, each read shorter than the rest.
    const uint64_t starts[] = {frames / 2, 1, frames - 1000, 0, 1023, 1024, 1025, frames / 3, 7};
    for (uint64_t start : starts) {
        SCOPED_TRACE("sample frame " + std::to_string(start));
        uint64_t position = start;
        uint64_t count = 999 * block;
        std::vector<uint8_t> buffer(count, 0xEE);
        ASSERT_EQ(f.parser.GetSample(&position, buffer.data(), &count), 0);
        EXPECT_TRUE(std::equal(buffer.begin(), buffer.end(), pcm.begin() + static_cast<ptrdiff_t>(start * block)));
    }
}

TEST_P(RealSamples, ChunkBlocksAreThePcmChunks)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const std::vector<IndexRow> rows = f.Index(f.parser.GetFirstAudioStreamNumber());
    ASSERT_FALSE(rows.empty());
    std::vector<uint8_t> buffer(f.parser.GetMaxAudioChunkSize());
    for (uint64_t i = 0; i < rows.size(); ++i) {
        uint64_t block = i;
        int32_t skip = static_cast<int32_t>(i % 3);  // what remains after the first bytes
        const uint64_t n = f.parser.GetOneAudioBlock(buffer.data(), &block, &skip);
        ASSERT_EQ(n, rows[i].size - static_cast<uint32_t>(skip)) << "block " << i;
        EXPECT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(n),
                               file.begin() + static_cast<ptrdiff_t>(rows[i].position + skip)))
            << "block " << i;
    }
}

// Bit 7 of the flags selects the second video stream of a file that has two.
TEST(RealSecondVideo, FlagBit7ReadsTheSecondStreamsPackets)
{
    std::string whyNot;
    const std::string path = MaterialPath("two_video_mjpeg", &whyNot);
    if (path.empty())
        GTEST_SKIP() << whyNot;
    const std::vector<ProbeStream> probe = ProbeFile(path);
    ASSERT_EQ(probe.size(), 2u);
    const std::vector<uint8_t> file = ReadWholeFile(path);
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    ASSERT_NE(f.parser.GetSecondVideoStreamNumber(), CZeAviFileParser::kNoStream);
    std::vector<uint8_t> buffer(f.parser.GetMaxVideoFrameSize());
    for (uint8_t flags : {uint8_t{0x80}, uint8_t{0x00}}) {
        const ProbeStream& expected = probe[flags ? 1 : 0];
        for (uint64_t i = 0; i < expected.packets.size(); ++i) {
            uint64_t frame = i, bytesRead = 0;
            uint8_t asked = flags;
            int16_t tolerance = 0;
            ASSERT_EQ(f.parser.GetFrame(buffer.data(), &frame, &bytesRead, &asked, &tolerance), 0);
            const ProbePacket& p = expected.packets[i];
            ASSERT_EQ(bytesRead, p.size) << "stream " << (flags ? 2 : 1) << " frame " << i;
            EXPECT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(p.size), file.begin() + p.pos))
                << "stream " << (flags ? 2 : 1) << " frame " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealFrames, ::testing::ValuesIn(Names([](const MaterialInfo& m) { return m.hasVideo; })),
                         [](const ::testing::TestParamInfo<std::string>& p) { return p.param; });
INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealSamples, ::testing::ValuesIn(Names([](const MaterialInfo& m) { return m.hasPcm; })),
                         [](const ::testing::TestParamInfo<std::string>& p) { return p.param; });

}  // namespace
}  // namespace zetest
