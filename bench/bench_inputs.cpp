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

// Writes the model's file unless a file of that name is already there; fills in the byte counts.
BenchInput Make(const std::string& name, const std::function<AviModel()>& make, uint64_t indexEntrySize)
{
    mkdir(ZE_BENCH_DATA_DIR, 0755);
    BenchInput in;
    in.path = std::string(ZE_BENCH_DATA_DIR) + "/" + name + ".avi";
    const AviModel model = make();
    uint64_t indexed = 0;
    for (const ChunkModel& c : model.chunks) {
        (StreamOfChunkId(c.ckid) == 0 ? in.videoBytes : in.audioBytes) += c.data.size();
        in.frames += StreamOfChunkId(c.ckid) == 0;
        indexed += c.indexed;
    }
    in.indexBytes = indexed * indexEntrySize;
    struct stat st;
    if (stat(in.path.c_str(), &st) != 0) {
        std::fprintf(stderr, "writing %s\n", in.path.c_str());
        WriteWholeFile(in.path, BuildAvi(model).bytes);
    }
    return in;
}

AviModel SmallVideo(size_t chunks, unsigned parts)
{
    AviModel model;
    model.width = 4;
    model.height = 2;
    model.streams = {VideoStream("DIB ", 4, 2)};
    model.chunks.resize(chunks);
    const std::vector<uint8_t> data = PatternBytes(24, 1);
    for (size_t i = 0; i < chunks; ++i) {
        model.chunks[i].ckid = "00db";
        model.chunks[i].data = data;
        model.chunks[i].flags = i % 25 == 0 ? kAviKeyFrame : 0;
        model.chunks[i].part = static_cast<unsigned>(i * parts / chunks);
    }
    return model;
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
            AviModel model = SmallVideo(kMillion, 4);
            model.streams[0].superIndex = SuperIndex::Full;
            model.idx1 = Idx1::None;
            return model;
        },
        8);
    return in;
}

const BenchInput& NoVideoChunkIn4MiBInput()
{
    static const BenchInput in = Make(
        "no_video_chunk_4mib",
        [] {
            AviModel model;
            model.width = 4;
            model.height = 2;
            model.streams = {VideoStream("DIB ", 4, 2), PcmStream(2, 48000, 16)};
            // Audio filling the first 5 MiB, then the video: the scan gives up before it.
            for (uint32_t i = 0; i < 80; ++i)
                model.chunks.push_back({"01wb", PatternBytes(65536, i)});
            for (uint32_t i = 0; i < 10; ++i)
                model.chunks.push_back({"00db", PatternBytes(24, i)});
            return model;
        },
        16);
    return in;
}

const BenchInput& FrameAccessInput()
{
    static const BenchInput in = Make(
        "frame_access",
        [] {
            AviModel model;
            model.width = 720;
            model.height = 576;
            model.streams = {VideoStream("MJPG", 720, 576), PcmStream(2, 48000, 16)};
            for (uint32_t i = 0; i < 600; ++i) {
                model.chunks.push_back({"00dc", PatternBytes(144000, i)});
                model.chunks.push_back({"01wb", PatternBytes(7680, i + 1000)});
            }
            return model;
        },
        16);
    return in;
}
