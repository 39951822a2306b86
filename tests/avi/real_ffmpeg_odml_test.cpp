// A file of more than a gigabyte from ffmpeg: two RIFF parts, 'ix##' chunks behind a super index,
// and an 'idx1' that covers the first part only. The reader must take its index from the super
// index, and list every frame ffprobe finds, in both parts.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_ffprobe_packets.h"

namespace zetest {
namespace {

class RealOpenDml : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string whyNot;
        path = MaterialPath("odml_rgb_1080p", &whyNot);
        if (path.empty())
            GTEST_SKIP() << whyNot;
        const std::vector<ProbeStream> probe = ProbeFile(path);
        ASSERT_EQ(probe.size(), 1u);
        packets = probe[0].packets;
        const std::vector<uint8_t> head = FileRange(path, 0, 8);
        firstPartEnd = 8 + (head[4] | head[5] << 8 | head[6] << 16 | uint64_t{head[7]} << 24);
        // The material must really span two parts, or this suite proves nothing.
        ASSERT_GT(static_cast<uint64_t>(packets.back().pos), firstPartEnd);
    }

    std::string path;
    std::vector<ProbePacket> packets;
    uint64_t firstPartEnd = 0;
};

TEST_F(RealOpenDml, IndexListsEveryFrameOfBothParts)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok()) << std::hex << f.parseResult;
    const std::vector<IndexRow> rows = f.Index(f.parser.GetFirstVideoStreamNumber());
    ASSERT_EQ(rows.size(), packets.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        EXPECT_EQ(static_cast<int64_t>(rows[i].position), packets[i].pos);
        EXPECT_EQ(rows[i].size, packets[i].size);
        EXPECT_EQ((rows[i].flags & 0x10) != 0, packets[i].key);
    }
    // The stream header counts all frames, the main header only those of the first part.
    EXPECT_EQ(f.parser.GetVideoStreamHeader()->GetLength(), packets.size());
}

TEST_F(RealOpenDml, FramesOnBothSidesOfThePartBoundaryAreTheStoredBytes)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok());
    const size_t second = static_cast<size_t>(
        std::find_if(packets.begin(), packets.end(),
                     [&](const ProbePacket& p) { return static_cast<uint64_t>(p.pos) > firstPartEnd; }) -
        packets.begin());
    std::vector<uint8_t> buffer(f.parser.GetMaxVideoFrameSize());
    for (size_t i : {size_t{0}, second - 1, second, packets.size() - 1}) {
        uint64_t frame = i, bytesRead = 0;
        uint8_t flags = 0;
        int16_t tolerance = 0;
        ASSERT_EQ(f.parser.GetFrame(buffer.data(), &frame, &bytesRead, &flags, &tolerance), 0) << i;
        ASSERT_EQ(bytesRead, packets[i].size);
        const std::vector<uint8_t> expected = FileRange(path, static_cast<uint64_t>(packets[i].pos), packets[i].size);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin())) << "frame " << i;
    }
}

}  // namespace
}  // namespace zetest
