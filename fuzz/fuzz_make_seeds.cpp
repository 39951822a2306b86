// Writes the seed corpus of the parser fuzz target into the folder given as argument: files from
// the test AVI writer covering every index form, and (when ffmpeg is there) small real files.
#include <sys/stat.h>

#include <cstdio>
#include <string>

#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_temp_file.h"

using namespace zetest;

namespace {

AviModel TwoStreams(size_t frames)
{
    AviModel model;
    model.width = 8;
    model.height = 6;
    model.streams = {VideoStream("DIB ", 8, 6), PcmStream(2, 8000, 16)};
    for (size_t i = 0; i < frames; ++i) {
        ChunkModel v{"00db", PatternBytes(144, static_cast<uint32_t>(i))};
        v.flags = i % 3 == 0 ? kAviKeyFrame : 0;
        v.part = static_cast<unsigned>(i / 4);
        model.chunks.push_back(v);
        ChunkModel a{"01wb", PatternBytes(64 + i, static_cast<uint32_t>(i) + 99)};
        a.part = v.part;
        model.chunks.push_back(a);
    }
    return model;
}

AviModel LegacyOnly(size_t frames)
{
    AviModel model = TwoStreams(frames);
    for (ChunkModel& c : model.chunks)
        c.part = 0;
    return model;
}

struct Seed {
    const char* name;
    AviModel (*make)();
};

const Seed kSeeds[] = {
    {"idx1_from_movi", [] { return LegacyOnly(6); }},
    {"idx1_absolute", [] { AviModel s = LegacyOnly(6); s.idx1 = Idx1::Absolute; return s; }},
    {"odml_parts", [] {
         AviModel s = TwoStreams(10);
         s.streams[0].superIndex = s.streams[1].superIndex = SuperIndex::Full;
         s.entriesPerIx = 3;
         return s;
     }},
    {"odml_empty_indx", [] { AviModel s = LegacyOnly(4); s.streams[0].superIndex = SuperIndex::Empty; return s; }},
    {"drop_frames", [] {
         AviModel s = LegacyOnly(5);
         s.chunks[2].drop = s.chunks[6].drop = true;
         return s;
     }},
    {"foreign_stream", [] {
         AviModel s = LegacyOnly(3);
         s.extraIdx1 = {{"05dc", 0x10, 4, 16}, {"ix00", 0, 4, 16}, {"0Adc", 0x10, 4, 144}};
         return s;
     }},
    {"odd_chunks_unpadded", [] {
         AviModel s = LegacyOnly(3);
         for (ChunkModel& c : s.chunks)
             c.data.resize(c.data.size() | 1), c.pad = false;
         return s;
     }},
    {"compressed_audio", [] {
         AviModel s = LegacyOnly(3);
         s.streams[1] = CompressedAudioStream(0x55, 2, 44100);
         return s;
     }},
    {"iavs", [] {
         AviModel s;
         s.streams = {IavsStream(true)};
         for (uint32_t i = 0; i < 2; ++i)
             s.chunks.push_back({"00__", PatternBytes(12000, i)});
         return s;
     }},
    {"truncated", [] { AviModel s = LegacyOnly(4); s.truncateAt = 700; return s; }},
};

struct TinyRecipe {
    const char* name;
    const char* args;
};

#define ZE_TINY_VIDEO "-f lavfi -i testsrc=size=32x24:rate=10:duration=0.4 "
#define ZE_TINY_AUDIO "-f lavfi -i sine=sample_rate=8000:duration=0.4 "
const TinyRecipe kTinyFfmpeg[] = {
    {"mjpeg_pcm", ZE_TINY_VIDEO ZE_TINY_AUDIO "-c:v mjpeg -c:a pcm_s16le"},
    {"mpeg4_u8", ZE_TINY_VIDEO ZE_TINY_AUDIO "-c:v mpeg4 -vtag XVID -g 2 -c:a pcm_u8"},
    {"raw_rgb", ZE_TINY_VIDEO "-c:v rawvideo -pix_fmt bgr24"},
    {"h264", ZE_TINY_VIDEO "-c:v libx264 -preset ultrafast -bf 2 -g 3"},
    {"mp2_audio", ZE_TINY_VIDEO ZE_TINY_AUDIO "-c:v mjpeg -c:a mp2"},
    {"audio_only", ZE_TINY_AUDIO "-c:a pcm_s16le -ac 2"},
};
#undef ZE_TINY_VIDEO
#undef ZE_TINY_AUDIO

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <corpus folder>\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];
    mkdir(dir.c_str(), 0755);
    int written = 0;
    for (const Seed& seed : kSeeds) {
        WriteWholeFile(dir + "/" + seed.name + ".avi", BuildAvi(seed.make()).bytes);
        ++written;
    }
    // Tiny real files: the fuzzer's input size limit should stay small, so these are a few frames
    // of a few pixels each.
    if (RunCommand("command -v ffmpeg >/dev/null 2>&1") == 0) {
        for (const TinyRecipe& r : kTinyFfmpeg) {
            const std::string out = dir + "/ffmpeg_" + r.name + ".avi";
            const std::string cmd = "ffmpeg -nostdin -hide_banner -loglevel error -y " + std::string(r.args) + " " +
                                    ShellQuote(out) + " 2>&1";
            std::string log;
            if (RunCommand(cmd, &log) == 0)
                ++written;
            else
                std::fprintf(stderr, "fuzz_make_seeds: skipping %s: %s\n", r.name, log.c_str());
        }
    }
    std::printf("fuzz_make_seeds: %d seeds in %s\n", written, dir.c_str());
    return 0;
}
