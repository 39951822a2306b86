// avihost on an interleaved DV file ('iavs', one stream): the module takes the sound out of the DV
// frames; it must equal what ffmpeg decodes from the same frames.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_temp_file.h"
#include "tests/host/host_runner.h"

namespace hosttest {
namespace {

constexpr size_t kPalFrame = 144000;

TEST(HostInterleavedDv, AudioFromTheFramesEqualsFfmpeg) {
    if (zetest::RunCommand("ffmpeg -hide_banner -encoders 2>/dev/null | grep -q ' dvvideo '") != 0)
        GTEST_SKIP() << "this ffmpeg cannot encode DV";
    // ffmpeg's DV muxer puts 48 kHz stereo into the frames.
    const std::string dv = OutputPath("frames.dv");
    ASSERT_EQ(0, zetest::RunCommand("ffmpeg -nostdin -v error -y -f lavfi -i testsrc=size=720x576:rate=25:duration=0.8 "
                                    "-f lavfi -i sine=frequency=523:sample_rate=48000:duration=0.8 -ac 2 -c:v dvvideo "
                                    "-pix_fmt yuv420p -aspect 4:3 -c:a pcm_s16le -f dv " + zetest::ShellQuote(dv)));
    const std::vector<uint8_t> frames = ReadFile(dv);
    ASSERT_EQ(0u, frames.size() % kPalFrame);

    zetest::AviSpec avi;
    avi.streams.push_back(zetest::IavsStream(true));
    avi.width = 720;
    avi.height = 576;
    for (size_t at = 0; at < frames.size(); at += kPalFrame)
        avi.chunks.push_back(zetest::ChunkSpec{"00__", {frames.begin() + static_cast<long>(at),
                                                        frames.begin() + static_cast<long>(at + kPalFrame)}});
    zetest::TempFile file(zetest::BuildAvi(avi).bytes);

    const std::string wav = OutputPath("iavs.wav");
    const HostRun run = RunHost({"audio", file.Path(), "-o", wav});
    ASSERT_EQ(0, run.status) << run.err;
    const std::string pcm = OutputPath("iavs.pcm");
    ASSERT_EQ(0, zetest::RunCommand("ffmpeg -nostdin -v error -y -i " + zetest::ShellQuote(dv) +
                                    " -map 0:a:0 -c:a pcm_s16le -f s16le " + zetest::ShellQuote(pcm)));
    const std::vector<uint8_t> ours = ReadFile(wav);
    const std::vector<uint8_t> theirs = ReadFile(pcm);
    ASSERT_GE(ours.size(), 44u);
    uint32_t dataBytes = 0;
    std::memcpy(&dataBytes, ours.data() + 40, 4);
    ASSERT_EQ(theirs.size(), dataBytes);
    EXPECT_TRUE(std::equal(theirs.begin(), theirs.end(), ours.begin() + 44)) << "the samples differ";

    // The one stream is described as DV video with the frames' own audio parameters.
    const HostRun dvRun = RunHost({"dv", "--json", file.Path()});
    ASSERT_EQ(0, dvRun.status) << dvRun.err;
    const nlohmann::json params = nlohmann::json::parse(dvRun.out);
    EXPECT_EQ(48000, params["dvAudio"]["sampleRate"].get<int>());
    EXPECT_EQ(16, params["dvAudio"]["bitsPerSample"].get<int>());
    for (const std::string& path : {dv, wav, pcm}) std::remove(path.c_str());
}

}  // namespace
}  // namespace hosttest
