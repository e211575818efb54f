#ifndef EOD_BENCH_RATIOREPORTER_H
#define EOD_BENCH_RATIOREPORTER_H

// Speed is reported as a ratio to a baseline measured in the same run (fwrite, deflate, ...
// of the same bytes), so results compare across machines. The console report is followed by
// one line per pair: measured CPU time / baseline CPU time (CPU time, because on a shared
// machine wall time mostly measures the other processes).

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace eodbench {

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    // Pairs of benchmark names: {measured, baseline}.
    explicit RatioReporter(std::vector<std::pair<std::string, std::string>> pairs)
        : _pairs(std::move(pairs)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                _times[run.benchmark_name()] = run.GetAdjustedCPUTime();
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        for (const auto& pair : _pairs) {
            const auto measured = _times.find(pair.first);
            const auto baseline = _times.find(pair.second);
            if (measured == _times.end() || baseline == _times.end()) continue;
            std::printf("ratio %-28s / %-28s = %6.2f\n", pair.first.c_str(), pair.second.c_str(),
                        measured->second / baseline->second);
        }
    }

  private:
    std::vector<std::pair<std::string, std::string>> _pairs;
    std::map<std::string, double> _times;
};

// Runs the benchmarks selected on the command line and prints the ratios of `pairs`.
inline int runWithRatios(int argc, char** argv,
                         std::vector<std::pair<std::string, std::string>> pairs) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter(std::move(pairs));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

}  // namespace eodbench

#endif
