// Stream lengths of a real ffmpeg file with its 'strh' lengths rewritten: the video length is cut
// down to the indexed frames but never raised; the audio length is recounted from the indexed
// bytes only when it disagrees with the video by more than a second.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/avi/real_parsed_file.h"

namespace zetest {
namespace {

TEST(RealLengthRepair, VideoIsCutToTheIndexAndAudioRecountedOnlyBeyondOneSecond)
{
    Material m;
    std::string whyNot;
    if (!m.Load("mjpeg_s16_stereo", &whyNot))
        GTEST_SKIP() << whyNot;
    const uint64_t frames = m.FirstOfType("video")->packets.size();
    const uint64_t samples = m.Joined("audio").size() / 4;  // 16-bit stereo
    // The two 'strh' chunks, video first, as ffmpeg writes them.
    std::vector<size_t> lengthAt;
    for (size_t at = 0; at + 4 <= m.file.size() && lengthAt.size() < 2; ++at)
        if (std::memcmp(&m.file[at], "strh", 4) == 0)
            lengthAt.push_back(at + 8 + 32);
    ASSERT_EQ(lengthAt.size(), 2u);

    struct Case {
        size_t stream;
        uint64_t stored;
        uint64_t expected;
    };
    const Case cases[] = {
        {0, frames + 100, frames},
        {0, frames - 5, frames - 5},
        // 44100 Hz: 44000 samples off stays inside a second and is kept as stored.
        {1, samples + 44000, samples + 44000},
        // Far off either way: the indexed bytes over the sample frame size.
        {1, samples * 10, samples},
        {1, 1, samples},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("stream " + std::to_string(c.stream) + " stored " + std::to_string(c.stored));
        std::vector<uint8_t> bytes = m.file;
        const uint32_t stored = static_cast<uint32_t>(c.stored);
        std::memcpy(&bytes[lengthAt[c.stream]], &stored, 4);
        TempFile avi(bytes);
        ParsedFile f(avi.Path());
        ASSERT_TRUE(f.Ok());
        const CZeAviStreamHeader* h = c.stream ? f.parser.GetAudioStreamHeader() : f.parser.GetVideoStreamHeader();
        ASSERT_NE(h, nullptr);
        EXPECT_EQ(h->GetLength(), c.expected);
    }
}

}  // namespace
}  // namespace zetest
