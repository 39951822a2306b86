// Opening an idx1 file whose first 4 MiB after the 'movi' list hold no "00db"/"00dc": the
// first-video-chunk scan runs its full length before the index is read. Beside it: libavformat
// opening the same file, and a memcpy of the 4 MiB the scan looks through.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "bench/bench_avformat.h"
#include "bench/bench_inputs.h"
#include "bench/bench_mapped_file.h"
#include "bench/bench_parser.h"
#include "bench/bench_ratio_reporter.h"

namespace {

constexpr size_t kScanBytes = 4u << 20;

void Ze(benchmark::State& state)
{
    const BenchInput& in = NoVideoChunkIn4MiBInput();
    for (auto _ : state) {
        const uint64_t entries = ZeOpenIndex(in.path);
        if (entries == 0)
            state.SkipWithError("the parser failed on the scan input");
        benchmark::DoNotOptimize(entries);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kScanBytes));
}

void Avformat(benchmark::State& state)
{
    const BenchInput& in = NoVideoChunkIn4MiBInput();
    for (auto _ : state)
        benchmark::DoNotOptimize(AvformatOpenIndex(in.path));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kScanBytes));
}

void Memcpy(benchmark::State& state)
{
    MappedFile file(NoVideoChunkIn4MiBInput().path);
    std::vector<uint8_t> target(kScanBytes);
    for (auto _ : state) {
        std::memcpy(target.data(), file.data(), target.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kScanBytes));
}

}  // namespace

BENCHMARK(Ze)->Name("scan_4MiB_no_match/ze")->Unit(benchmark::kMillisecond);
BENCHMARK(Avformat)->Name("scan_4MiB_no_match/avformat")->Unit(benchmark::kMillisecond);
BENCHMARK(Memcpy)->Name("scan_4MiB_no_match/memcpy")->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return RunBenchmarksWithRatios(argc, argv); }
