// avihost on files made by ffmpeg: its audio, stream description, index and DV output against what
// ffmpeg and ffprobe say about the same files, and the sound of interleaved DV against ffmpeg's decode.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_ffprobe_packets.h"
#include "tests/host/host_runner.h"

namespace hosttest {
namespace {

using nlohmann::json;

double Ratio(const std::string& text) {
    const size_t slash = text.find('/');
    const double num = std::stod(text.substr(0, slash));
    const double den = slash == std::string::npos ? 1.0 : std::stod(text.substr(slash + 1));
    return den == 0.0 ? 0.0 : num / den;
}

class AudioAgainstFfmpeg : public ::testing::TestWithParam<const char*> {};

TEST_P(AudioAgainstFfmpeg, WavSamplesEqualFfmpegDecode) {
    MATERIAL_OR_SKIP(path, GetParam());
    const zetest::TempDir out;
    const std::string wav = out.Path() + "/audio.wav";
    const HostRun run = RunHost({"audio", path, "-o", wav});
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ(std::string::npos, run.err.find("error"));

    const json streams = ProbeStreams(path)["streams"];
    std::string codec;
    for (const json& s : streams)
        if (s["codec_type"] == "audio") codec = s["codec_name"];
    ASSERT_FALSE(codec.empty());
    const std::string format = codec == "pcm_u8" ? "u8" : "s16le";
    const std::string pcm = out.Path() + "/ffmpeg.pcm";
    ASSERT_EQ(0, zetest::RunCommand("ffmpeg -nostdin -v error -y -i " + zetest::ShellQuote(path) +
                                    " -map 0:a:0 -c:a " + codec + " -f " + format + " " + zetest::ShellQuote(pcm)));
    ExpectWavDataEquals(wav, pcm);
}

INSTANTIATE_TEST_SUITE_P(Material, AudioAgainstFfmpeg,
                         ::testing::Values("dv_pal", "mjpeg_s16_stereo", "dx50_u8_stereo", "h264_s16_mono",
                                           "rgb_u8_mono", "audio_only_s16_stereo"));

class InfoAgainstFfprobe : public ::testing::TestWithParam<const char*> {};

TEST_P(InfoAgainstFfprobe, StreamDescription) {
    MATERIAL_OR_SKIP(path, GetParam());
    const HostRun run = RunHost({"info", "--json", path});
    ASSERT_EQ(0, run.status) << run.err;
    const json info = json::parse(run.out);
    const json& si = info["streamInfo"];
    ASSERT_TRUE(si.is_object()) << run.out;
    const json probed = ProbeStreams(path);
    for (const json& s : probed["streams"]) {
        if (s["codec_type"] == "video") {
            EXPECT_EQ(s["width"].get<int>(), si["width"].get<int>());
            EXPECT_EQ(s["height"].get<int>(), std::abs(si["height"].get<int>()));
            EXPECT_NEAR(Ratio(s["r_frame_rate"]), si["frameRate"].get<double>(), 1e-9);
            EXPECT_EQ(std::stoi(s["nb_frames"].get<std::string>()), si["frameCount"].get<int>());
        } else if (s["codec_type"] == "audio") {
            const json& a = si["audio"];
            EXPECT_EQ(1, a["wFormatTag"].get<int>());
            EXPECT_EQ(s["channels"].get<int>(), a["nChannels"].get<int>());
            EXPECT_EQ(std::stoi(s["sample_rate"].get<std::string>()), a["nSamplesPerSec"].get<int>());
            EXPECT_EQ(s["bits_per_sample"].get<int>(), a["wBitsPerSample"].get<int>());
        }
    }
    // The headers come by their AVI names, FOURCCs as text.
    EXPECT_EQ(info["avih"]["dwWidth"].get<int>(), si["width"].get<int>());
    const json& first = info["streams"][0];
    EXPECT_EQ("vids", first["strh"]["fccType"]);
    EXPECT_EQ(first["strh"]["dwLength"].get<int>(), si["frameCount"].get<int>());
    EXPECT_TRUE(first["strf"].contains("biCompression"));
    EXPECT_EQ(json({"RGB24", "YUY2", "RGB32"}), info["colorFormats"]);
}

INSTANTIATE_TEST_SUITE_P(Material, InfoAgainstFfprobe,
                         ::testing::Values("dv_pal", "dv_ntsc", "mjpeg_s16_stereo", "divx_video_only", "h264_s16_mono",
                                           "rgb_u8_mono"));

TEST(HostInfo, AudioOnlyFileHasNoVideoDescription) {
    MATERIAL_OR_SKIP(path, "audio_only_s16_stereo");
    const HostRun run = RunHost({"info", "--json", path});
    ASSERT_EQ(0, run.status) << run.err;
    const json info = json::parse(run.out);
    EXPECT_TRUE(info["streamInfo"].is_null());
    EXPECT_NE(std::string::npos, info["streamInfoError"].get<std::string>().find("CZEAviReader::GetStreamInfo"));
    EXPECT_EQ("auds", info["streams"][0]["strh"]["fccType"]);
    EXPECT_EQ(32000, info["streams"][0]["strf"]["nSamplesPerSec"].get<int>());
}

TEST(HostIndex, VideoEntriesMatchFfprobePackets) {
    for (const char* name : {"mjpeg_s16_stereo", "divx_video_only", "dv_pal"}) {
        SCOPED_TRACE(name);
        std::string why;
        const std::string path = zetest::MaterialPath(name, &why);
        if (path.empty()) continue;
        const HostRun run = RunHost({"index", "--json", "--stream", "0", path});
        ASSERT_EQ(0, run.status) << run.err;
        const json entries = json::parse(run.out);
        const auto probe = zetest::ProbeFile(path);
        ASSERT_FALSE(probe.empty());
        const auto& packets = probe[0].packets;
        ASSERT_EQ(packets.size(), entries.size());
        for (size_t i = 0; i < packets.size(); ++i) {
            EXPECT_EQ(packets[i].pos, entries[i]["qwPosition"].get<int64_t>()) << "entry " << i;
            EXPECT_EQ(packets[i].size, entries[i]["dwSize"].get<uint32_t>()) << "entry " << i;
            EXPECT_EQ(packets[i].key, entries[i]["keyFrame"].get<bool>()) << "entry " << i;
            EXPECT_EQ(0, entries[i]["stream"].get<int>());
            EXPECT_EQ(i, entries[i]["entry"].get<size_t>());
            EXPECT_EQ("00dc", entries[i]["ckid"].get<std::string>().substr(0, 2) + "dc");
        }
    }
}

TEST(HostDv, RecordingDateAndCameraValues) {
    MATERIAL_OR_SKIP(path, "dv_pal");
    const HostRun run = RunHost({"dv", "--json", "--frame", "3", path});
    ASSERT_EQ(0, run.status) << run.err;
    const json dv = json::parse(run.out);
    EXPECT_EQ(3, dv["frame"].get<int>());
    // ffmpeg's DV muxer writes the creation time into every frame.
    EXPECT_EQ("31.12.2024 23:59:58", dv["recordingDateTime"]);
    EXPECT_EQ(124, dv["timestamp"]["yearsSince1900"].get<int>());
    EXPECT_EQ(11, dv["timestamp"]["month"].get<int>());
    EXPECT_EQ(0, dv["dvVideo"]["sixtyFields"].get<int>());
    EXPECT_DOUBLE_EQ(4.0 / 3.0, dv["dvVideo"]["aspectRatio"].get<double>());
    const json& camera = dv["camera"];
    EXPECT_EQ(58u, camera.size());
    for (const char* name : {"Iris", "AEMode", "GainMasterGain", "KneeSlope", "ShutterSpeedConsumer"})
        EXPECT_TRUE(camera.contains(name)) << name;
    for (const auto& [name, entry] : camera.items()) {
        EXPECT_TRUE(entry.contains("id") && entry.contains("value")) << name;
        EXPECT_EQ(entry["id"].is_null(), entry["value"].is_null()) << name;
    }

    const HostRun text = RunHost({"dv", path});
    ASSERT_EQ(0, text.status) << text.err;
    EXPECT_NE(std::string::npos, text.out.find("Recorded: 31.12.2024 23:59:58"));
}

TEST(HostRaw, FrameAndAudioChunksAsStored) {
    MATERIAL_OR_SKIP(path, "dv_pal");
    const auto probe = zetest::ProbeFile(path);
    const std::vector<uint8_t> file = zetest::ReadWholeFile(path);
    const zetest::TempDir out;
    const HostRun run = RunHost({"raw", path, "--frame", "5", "-o", out.Path() + "/frame.dv"});
    ASSERT_EQ(0, run.status) << run.err;
    const std::vector<uint8_t> frame = zetest::ReadWholeFile(out.Path() + "/frame.dv");
    const zetest::ProbePacket& packet = probe[0].packets.at(5);
    ASSERT_EQ(packet.size, frame.size());
    EXPECT_TRUE(std::equal(frame.begin(), frame.end(), file.begin() + packet.pos));

    const std::string chunks = out.Path() + "/audio.raw";
    const HostRun audio = RunHost({"raw", path, "--audio", "--chunks", "3", "-o", chunks});
    ASSERT_EQ(0, audio.status) << audio.err;
    // The first three stored audio chunks, from the module's own index.
    const json entries = json::parse(RunHost({"index", "--json", "--stream", "1", path}).out);
    std::vector<uint8_t> expected;
    for (int i = 0; i < 3; ++i) {
        const auto at = file.begin() + entries[i]["qwPosition"].get<int64_t>();
        expected.insert(expected.end(), at, at + entries[i]["dwSize"].get<int64_t>());
    }
    EXPECT_EQ(expected, zetest::ReadWholeFile(chunks));
}

constexpr size_t kPalFrame = 144000;

// An interleaved DV file ('iavs', one stream): the module takes the sound out of the DV frames; it
// must equal what ffmpeg decodes from the same frames.
TEST(HostInterleavedDv, AudioFromTheFramesEqualsFfmpeg) {
    if (zetest::RunCommand("ffmpeg -hide_banner -encoders 2>/dev/null | grep -q ' dvvideo '") != 0)
        GTEST_SKIP() << "this ffmpeg cannot encode DV";
    // ffmpeg's DV muxer puts 48 kHz stereo into the frames.
    const zetest::TempDir out;
    const std::string dv = out.Path() + "/frames.dv";
    ASSERT_EQ(0, zetest::RunCommand("ffmpeg -nostdin -v error -y -f lavfi -i testsrc=size=720x576:rate=25:duration=0.8 "
                                    "-f lavfi -i sine=frequency=523:sample_rate=48000:duration=0.8 -ac 2 -c:v dvvideo "
                                    "-pix_fmt yuv420p -aspect 4:3 -c:a pcm_s16le -f dv " + zetest::ShellQuote(dv)));
    const std::vector<uint8_t> frames = zetest::ReadWholeFile(dv);
    ASSERT_EQ(0u, frames.size() % kPalFrame);

    zetest::AviModel avi;
    avi.streams.push_back(zetest::IavsStream(true));
    avi.width = 720;
    avi.height = 576;
    for (size_t at = 0; at < frames.size(); at += kPalFrame)
        avi.chunks.push_back(zetest::ChunkModel{"00__", {frames.begin() + static_cast<long>(at),
                                                        frames.begin() + static_cast<long>(at + kPalFrame)}});
    zetest::TempFile file(zetest::BuildAvi(avi).bytes);

    const std::string wav = out.Path() + "/iavs.wav";
    const HostRun run = RunHost({"audio", file.Path(), "-o", wav});
    ASSERT_EQ(0, run.status) << run.err;
    const std::string pcm = out.Path() + "/iavs.pcm";
    ASSERT_EQ(0, zetest::RunCommand("ffmpeg -nostdin -v error -y -i " + zetest::ShellQuote(dv) +
                                    " -map 0:a:0 -c:a pcm_s16le -f s16le " + zetest::ShellQuote(pcm)));
    ExpectWavDataEquals(wav, pcm);

    // The one stream is described as DV video with the frames' own audio parameters.
    const HostRun dvRun = RunHost({"dv", "--json", file.Path()});
    ASSERT_EQ(0, dvRun.status) << dvRun.err;
    const nlohmann::json params = nlohmann::json::parse(dvRun.out);
    EXPECT_EQ(48000, params["dvAudio"]["sampleRate"].get<int>());
    EXPECT_EQ(16, params["dvAudio"]["bitsPerSample"].get<int>());
}

}  // namespace
}  // namespace hosttest
