// Open + full parse + index of files with a million index entries: one idx1, and OpenDML ix##
// chunks over four RIFF parts. Beside each: libavformat opening the same file (its AVI demuxer
// reads the whole index at open) and a memcpy of as many bytes as the index holds.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "bench/bench_avformat.h"
#include "bench/bench_inputs.h"
#include "bench/bench_mapped_file.h"
#include "bench/bench_parser.h"
#include "bench/bench_ratio_reporter.h"

namespace {

void Ze(benchmark::State& state, const BenchInput& (*input)())
{
    const BenchInput& in = input();
    for (auto _ : state) {
        const uint64_t entries = ZeOpenIndex(in.path);
        if (entries != in.frames)
            state.SkipWithError("the parser did not index every chunk");
        benchmark::DoNotOptimize(entries);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * in.frames));
}

void Avformat(benchmark::State& state, const BenchInput& (*input)())
{
    const BenchInput& in = input();
    for (auto _ : state)
        benchmark::DoNotOptimize(AvformatOpenIndex(in.path));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * in.frames));
}

// The index bytes copied out of the page-cached file, from its end (where idx1 and the last ix##
// chunks lie).
void Memcpy(benchmark::State& state, const BenchInput& (*input)())
{
    const BenchInput& in = input();
    MappedFile file(in.path);
    std::vector<uint8_t> target(in.indexBytes);
    const uint8_t* from = file.data() + file.size() - in.indexBytes;
    for (auto _ : state) {
        std::memcpy(target.data(), from, target.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.indexBytes));
}

}  // namespace

BENCHMARK_CAPTURE(Ze, idx1, Idx1MillionInput)->Name("idx1_1M_entries/ze")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Avformat, idx1, Idx1MillionInput)->Name("idx1_1M_entries/avformat")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memcpy, idx1, Idx1MillionInput)->Name("idx1_1M_entries/memcpy")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ze, odml, OdmlMillionInput)->Name("odml_1M_entries_4_parts/ze")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Avformat, odml, OdmlMillionInput)->Name("odml_1M_entries_4_parts/avformat")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memcpy, odml, OdmlMillionInput)->Name("odml_1M_entries_4_parts/memcpy")->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return RunBenchmarksWithRatios(argc, argv); }
