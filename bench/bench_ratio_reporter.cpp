#include "bench/bench_ratio_reporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred)
                continue;
            const std::string name = run.benchmark_name();
            const size_t slash = name.find('/');
            if (slash == std::string::npos)
                continue;
            const std::string group = name.substr(0, slash);
            std::string who = name.substr(slash + 1);
            who = who.substr(0, who.find('/'));
            m_times[group][who] = run.GetAdjustedCPUTime();
        }
    }

    void PrintRatios() const
    {
        std::printf("\n%-28s %14s %14s %14s %12s %12s\n", "group", "ze", "avformat", "memcpy", "ze/avformat",
                    "ze/memcpy");
        for (const auto& [group, times] : m_times) {
            auto get = [&](const char* who) {
                auto it = times.find(who);
                return it == times.end() ? 0.0 : it->second;
            };
            const double ze = get("ze"), av = get("avformat"), mc = get("memcpy");
            std::printf("%-28s %14.3f %14.3f %14.3f %12.3f %12.3f\n", group.c_str(), ze, av, mc,
                        av > 0 ? ze / av : 0.0, mc > 0 ? ze / mc : 0.0);
        }
        std::printf("(CPU time per iteration in each benchmark's own unit, steadier than wall time on a shared machine; ratio < 1: ours is faster)\n");
    }

private:
    std::map<std::string, std::map<std::string, double>> m_times;
};

}  // namespace

int RunBenchmarksWithRatios(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios();
    benchmark::Shutdown();
    return 0;
}
