// GetFrame and GetSample over a page-cached file of 600 PAL-DV-sized frames with 48 kHz stereo
// PCM: every frame, then the whole audio in 64 KiB reads. Beside them: libavformat reading the
// same packets with av_read_frame, and a memcpy of the same bytes out of the mapped file.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "bench/bench_avformat.h"
#include "bench/bench_inputs.h"
#include "bench/bench_mapped_file.h"
#include "bench/bench_ratio_reporter.h"

namespace {

constexpr uint64_t kAudioRead = 64 * 1024;

// The parser opened once per benchmark; the file stays in the page cache between iterations.
class OpenedParser {
public:
    explicit OpenedParser(const std::string& path)
    {
        m_ok = parser.OpenAVIFile(path.c_str()) >= 0 && parser.Parse() >= 0;
    }
    bool ok() const { return m_ok; }
    CZeAviFileParser parser;

private:
    bool m_ok = false;
};

void FramesZe(benchmark::State& state)
{
    const BenchInput& in = FrameAccessInput();
    OpenedParser p(in.path);
    if (!p.ok()) {
        state.SkipWithError("parse failed");
        return;
    }
    std::vector<uint8_t> buffer(p.parser.GetMaxVideoFrameSize());
    const uint64_t frames = p.parser.GetVideoFrameCount();
    for (auto _ : state) {
        for (uint64_t i = 0; i < frames; ++i) {
            uint64_t frame = i, bytesRead = 0;
            uint8_t flags = 0;
            int16_t tolerance = 0;
            if (p.parser.GetFrame(buffer.data(), &frame, &bytesRead, &flags, &tolerance) != 0)
                state.SkipWithError("GetFrame failed");
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.videoBytes));
}

void FramesAvformat(benchmark::State& state)
{
    const BenchInput& in = FrameAccessInput();
    for (auto _ : state)
        benchmark::DoNotOptimize(AvformatReadAll(in.path, true));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.videoBytes));
}

void SamplesZe(benchmark::State& state)
{
    const BenchInput& in = FrameAccessInput();
    OpenedParser p(in.path);
    if (!p.ok()) {
        state.SkipWithError("parse failed");
        return;
    }
    std::vector<uint8_t> buffer(kAudioRead);
    const uint64_t block = 4;  // 16-bit stereo
    const uint64_t total = in.audioBytes / block;
    for (auto _ : state) {
        for (uint64_t pos = 0; pos < total; pos += kAudioRead / block) {
            uint64_t position = pos;
            uint64_t count = std::min<uint64_t>(kAudioRead, (total - pos) * block);
            if (p.parser.GetSample(&position, buffer.data(), &count) != 0)
                state.SkipWithError("GetSample failed");
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.audioBytes));
}

void SamplesAvformat(benchmark::State& state)
{
    const BenchInput& in = FrameAccessInput();
    for (auto _ : state)
        benchmark::DoNotOptimize(AvformatReadAll(in.path, false));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.audioBytes));
}

// Copies every chunk of one stream out of the mapping, chunk by chunk as a reader does. Chunk
// positions are found by walking the 'movi' list once, outside the timing.
void CopyChunks(benchmark::State& state, const char* streamTag, uint64_t totalBytes)
{
    MappedFile file(FrameAccessInput().path);
    std::vector<std::pair<size_t, uint32_t>> chunks;
    const uint8_t* d = file.data();
    for (size_t at = 12; at + 8 <= file.size();) {
        uint32_t size;
        std::memcpy(&size, d + at + 4, 4);
        if (std::memcmp(d + at, "LIST", 4) == 0 || std::memcmp(d + at, "RIFF", 4) == 0) {
            at += 12;
            continue;
        }
        if (std::memcmp(d + at + 2, streamTag, 2) == 0)
            chunks.emplace_back(at + 8, size);
        at += 8 + size + (size & 1);
    }
    std::vector<uint8_t> target(144000);
    for (auto _ : state) {
        for (const auto& [pos, size] : chunks)
            std::memcpy(target.data(), d + pos, std::min<size_t>(size, target.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * totalBytes));
}

void FramesMemcpy(benchmark::State& state) { CopyChunks(state, "dc", FrameAccessInput().videoBytes); }
void SamplesMemcpy(benchmark::State& state) { CopyChunks(state, "wb", FrameAccessInput().audioBytes); }

}  // namespace

BENCHMARK(FramesZe)->Name("get_frame_600x144000/ze")->Unit(benchmark::kMillisecond);
BENCHMARK(FramesAvformat)->Name("get_frame_600x144000/avformat")->Unit(benchmark::kMillisecond);
BENCHMARK(FramesMemcpy)->Name("get_frame_600x144000/memcpy")->Unit(benchmark::kMillisecond);
BENCHMARK(SamplesZe)->Name("get_sample_64KiB_reads/ze")->Unit(benchmark::kMillisecond);
BENCHMARK(SamplesAvformat)->Name("get_sample_64KiB_reads/avformat")->Unit(benchmark::kMillisecond);
BENCHMARK(SamplesMemcpy)->Name("get_sample_64KiB_reads/memcpy")->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return RunBenchmarksWithRatios(argc, argv); }
