#include "bench/bench_inputs.h"

#include <sys/stat.h>

#include <cstdio>
#include <functional>

#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_temp_file.h"

using namespace zetest;

namespace {

constexpr size_t kMillion = 1000000;

// Writes the spec's file unless a file of that name is already there; fills in the byte counts.
BenchInput Make(const std::string& name, const std::function<AviSpec()>& make, uint64_t indexEntrySize)
{
    mkdir(ZE_BENCH_DATA_DIR, 0755);
    BenchInput in;
    in.path = std::string(ZE_BENCH_DATA_DIR) + "/" + name + ".avi";
    const AviSpec spec = make();
    uint64_t indexed = 0;
    for (const ChunkSpec& c : spec.chunks) {
        (StreamOfChunkId(c.ckid) == 0 ? in.videoBytes : in.audioBytes) += c.data.size();
        in.frames += StreamOfChunkId(c.ckid) == 0;
        indexed += c.indexed;
    }
    in.indexBytes = indexed * indexEntrySize;
    struct stat st;
    if (stat(in.path.c_str(), &st) != 0) {
        std::fprintf(stderr, "writing %s\n", in.path.c_str());
        WriteWholeFile(in.path, BuildAvi(spec).bytes);
    }
    return in;
}

AviSpec SmallVideo(size_t chunks, unsigned parts)
{
    AviSpec spec;
    spec.width = 4;
    spec.height = 2;
    spec.streams = {VideoStream("DIB ", 4, 2)};
    spec.chunks.resize(chunks);
    const std::vector<uint8_t> data = PatternBytes(24, 1);
    for (size_t i = 0; i < chunks; ++i) {
        spec.chunks[i].ckid = "00db";
        spec.chunks[i].data = data;
        spec.chunks[i].flags = i % 25 == 0 ? kAviKeyFrame : 0;
        spec.chunks[i].part = static_cast<unsigned>(i * parts / chunks);
    }
    return spec;
}

}  // namespace

const BenchInput& Idx1MillionInput()
{
    static const BenchInput in = Make("idx1_million", [] { return SmallVideo(kMillion, 1); }, 16);
    return in;
}

const BenchInput& OdmlMillionInput()
{
    static const BenchInput in = Make(
        "odml_million",
        [] {
            AviSpec spec = SmallVideo(kMillion, 4);
            spec.streams[0].superIndex = SuperIndex::Full;
            spec.idx1 = Idx1::None;
            return spec;
        },
        8);
    return in;
}

const BenchInput& NoVideoChunkIn4MiBInput()
{
    static const BenchInput in = Make(
        "no_video_chunk_4mib",
        [] {
            AviSpec spec;
            spec.width = 4;
            spec.height = 2;
            spec.streams = {VideoStream("DIB ", 4, 2), PcmStream(2, 48000, 16)};
            // Audio filling the first 5 MiB, then the video: the scan gives up before it.
            for (uint32_t i = 0; i < 80; ++i)
                spec.chunks.push_back({"01wb", PatternBytes(65536, i)});
            for (uint32_t i = 0; i < 10; ++i)
                spec.chunks.push_back({"00db", PatternBytes(24, i)});
            return spec;
        },
        16);
    return in;
}

const BenchInput& FrameAccessInput()
{
    static const BenchInput in = Make(
        "frame_access",
        [] {
            AviSpec spec;
            spec.width = 720;
            spec.height = 576;
            spec.streams = {VideoStream("MJPG", 720, 576), PcmStream(2, 48000, 16)};
            for (uint32_t i = 0; i < 600; ++i) {
                spec.chunks.push_back({"00dc", PatternBytes(144000, i)});
                spec.chunks.push_back({"01wb", PatternBytes(7680, i + 1000)});
            }
            return spec;
        },
        16);
    return in;
}
