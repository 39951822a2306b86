// Real DV frames made by ffmpeg's dv muxer (audio, recording date and time inside the frames):
// the type-2 files ffmpeg writes, and the same frames re-wrapped by the test writer as a type-1
// ('iavs') file, which ffmpeg cannot write. The interleaved file's synthesised audio must be the
// PCM that ffmpeg took out of the same frames into the type-2 file.
#include <gtest/gtest.h>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_avi_formats.h"

namespace zetest {
namespace {

struct DvCase {
    const char* material;
    bool pal;
    uint32_t sixtyFields;
    double aspect;
    const char* recorded;  // as the material's recipe sets creation_time; empty when not set
};

const DvCase kCases[] = {
    {"dv_pal", true, 0, 4.0 / 3.0, "31.12.2024 23:59:58"},
    // Without a creation time ffmpeg's dv muxer dates the frames at the epoch.
    {"dv_ntsc", false, 1, 16.0 / 9.0, "1.1.1970 0:0:0"},
};

class RealDv : public ::testing::TestWithParam<DvCase> {
protected:
    void SetUp() override
    {
        std::string whyNot;
        if (!m.Load(GetParam().material, &whyNot))
            GTEST_SKIP() << whyNot;
        frames = m.Packets(*m.FirstOfType("video"));
        pcm = m.Joined("audio");
        ASSERT_GT(frames.size(), 20u);
        ASSERT_FALSE(pcm.empty());
    }

    void ExpectVideoParams(const CZeAviFileParser& parser) const
    {
        const DvCase& c = GetParam();
        ASSERT_TRUE(parser.IsDV());
        const ZeDVVideoParams& v = parser.GetDVVideoParams();
        EXPECT_EQ(v.sixtyFields, c.sixtyFields);
        EXPECT_DOUBLE_EQ(v.aspectRatio, c.aspect);
        EXPECT_STREQ(v.recordingDateTime, c.recorded);
    }

    Material m;
    std::vector<std::vector<uint8_t>> frames;
    std::vector<uint8_t> pcm;
};

TEST_P(RealDv, TypeTwoFileGivesTheFramesParameters)
{
    ParsedFile f(m.path);
    ASSERT_TRUE(f.Ok());
    EXPECT_FALSE(f.parser.IsInterleavedDV());
    ExpectVideoParams(f.parser);
}

// The frames as one 'iavs' stream of "00__" chunks, the way capture programs write type 1. Only
// offsets counted from 'movi': the base of absolute idx1 offsets is detected from a "00db" or
// "00dc" chunk, which an interleaved file does not have.
TEST_P(RealDv, InterleavedFileServesTheSameFramesAndThePcmFfmpegTookFromThem)
{
    AviModel model;
    model.microSecPerFrame = GetParam().pal ? 40000 : 33367;
    model.width = 720;
    model.height = GetParam().pal ? 576 : 480;
    model.streams = {IavsStream(GetParam().pal)};
    model.idx1 = Idx1::FromMovi;
    for (const std::vector<uint8_t>& frame : frames)
        model.chunks.push_back({"00__", frame});
    TempFile avi(BuildAvi(model).bytes);
    ParsedFile f(avi.Path());
    ASSERT_TRUE(f.Ok()) << std::hex << f.parseResult;
    EXPECT_TRUE(f.parser.IsInterleavedDV());
    ExpectVideoParams(f.parser);
    ASSERT_EQ(f.parser.GetVideoFrameCount(), frames.size());
    ExpectFrames(f, frames);

    const WAVEFORMATEX* wave = f.parser.GetAudioFormat();
    ASSERT_NE(wave, nullptr) << "no audio stream made for the interleaved stream";
    EXPECT_EQ(wave->wFormatTag, 1);
    ASSERT_EQ(wave->nChannels, 2);
    EXPECT_EQ(wave->nSamplesPerSec, 48000u);
    ASSERT_EQ(wave->wBitsPerSample, 16);
    // A sample frame is one sample of each channel, whatever the block alignment says. Read in
    // pieces that do not fit DV frames, sequentially, as the audio reader does.
    const std::vector<uint8_t> got = f.PcmInSteps(pcm.size() / 4, 4, 1111);
    ASSERT_EQ(got.size(), pcm.size());
    size_t firstDiff = std::mismatch(got.begin(), got.end(), pcm.begin()).first - got.begin();
    EXPECT_EQ(firstDiff, got.size()) << "first differing byte of the PCM stream";
}

INSTANTIATE_TEST_SUITE_P(Ffmpeg, RealDv, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<DvCase>& p) { return std::string(p.param.material); });

}  // namespace
}  // namespace zetest
