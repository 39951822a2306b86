// A file of more than a gigabyte from ffmpeg: two RIFF parts, 'ix##' chunks behind a super index,
// and an 'idx1' that covers the first part only. The reader must take its index from the super
// index, and list every frame ffprobe finds, in both parts.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/avi/real_parsed_file.h"

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

TEST_F(RealOpenDml, IndexListsAndServesEveryFrameOfBothParts)
{
    ParsedFile f(path);
    ASSERT_TRUE(f.Ok()) << std::hex << f.parseResult;
    ExpectRowsArePackets(f.Index(f.parser.GetFirstVideoStreamNumber()), packets);
    // The stream header counts all frames, the main header only those of the first part.
    EXPECT_EQ(f.parser.GetVideoStreamHeader()->GetLength(), packets.size());

    // Frames on both sides of the part boundary are the stored bytes.
    const size_t second = static_cast<size_t>(
        std::find_if(packets.begin(), packets.end(),
                     [&](const ProbePacket& p) { return static_cast<uint64_t>(p.pos) > firstPartEnd; }) -
        packets.begin());
    std::vector<uint8_t> buffer(f.parser.GetMaxVideoFrameSize());
    for (size_t i : {size_t{0}, second - 1, second, packets.size() - 1}) {
        uint64_t bytesRead = 0;
        ASSERT_EQ(f.Frame(buffer, i, &bytesRead), 0) << i;
        ASSERT_EQ(bytesRead, packets[i].size);
        const std::vector<uint8_t> expected = FileRange(path, static_cast<uint64_t>(packets[i].pos), packets[i].size);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin())) << "frame " << i;
    }
}

}  // namespace
}  // namespace zetest
