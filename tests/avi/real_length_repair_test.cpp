// Stream lengths of a real ffmpeg file with its 'strh' lengths rewritten: the video length is cut
// down to the indexed frames but never raised; the audio length is recounted from the indexed
// bytes only when it disagrees with the video by more than a second.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_ffprobe_packets.h"
#include "tests/fixtures/ze_temp_file.h"

namespace zetest {
namespace {

class RealLengthRepair : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string whyNot;
        const std::string path = MaterialPath("mjpeg_s16_stereo", &whyNot);
        if (path.empty())
            GTEST_SKIP() << whyNot;
        original = ReadWholeFile(path);
        for (const ProbeStream& s : ProbeFile(path)) {
            if (s.codecType == "video")
                frames = s.packets.size();
            for (const ProbePacket& p : s.packets)
                pcmBytes += s.codecType == "audio" ? p.size : 0;
        }
        // The two 'strh' chunks, video first, as ffmpeg writes them.
        for (size_t at = 0; at + 4 <= original.size() && lengthAt.size() < 2; ++at)
            if (std::memcmp(&original[at], "strh", 4) == 0)
                lengthAt.push_back(at + 8 + 32);
        ASSERT_EQ(lengthAt.size(), 2u);
    }

    // The file with the given stream's stored length replaced, parsed.
    uint64_t ParsedLength(size_t stream, uint32_t storedLength, bool audioResult)
    {
        std::vector<uint8_t> bytes = original;
        std::memcpy(&bytes[lengthAt[stream]], &storedLength, 4);
        TempFile avi(bytes);
        ParsedFile f(avi.Path());
        EXPECT_TRUE(f.Ok());
        const CZeAviStreamHeader* h = audioResult ? f.parser.GetAudioStreamHeader() : f.parser.GetVideoStreamHeader();
        return h ? h->GetLength() : ~uint64_t{0};
    }

    std::vector<uint8_t> original;
    std::vector<size_t> lengthAt;
    uint64_t frames = 0;
    uint64_t pcmBytes = 0;
};

TEST_F(RealLengthRepair, VideoLengthIsCutToTheIndexButNeverRaised)
{
    EXPECT_EQ(ParsedLength(0, static_cast<uint32_t>(frames + 100), false), frames);
    EXPECT_EQ(ParsedLength(0, static_cast<uint32_t>(frames - 5), false), frames - 5);
}

TEST_F(RealLengthRepair, AudioLengthIsRecountedOnlyBeyondOneSecondOfDisagreement)
{
    const uint64_t samples = pcmBytes / 4;  // 16-bit stereo
    // 44100 Hz: 44000 samples off stays inside a second and is kept as stored.
    EXPECT_EQ(ParsedLength(1, static_cast<uint32_t>(samples + 44000), true), samples + 44000);
    // Far off either way: the indexed bytes over the sample frame size.
    EXPECT_EQ(ParsedLength(1, static_cast<uint32_t>(samples * 10), true), samples);
    EXPECT_EQ(ParsedLength(1, 1, true), samples);
}

}  // namespace
}  // namespace zetest
