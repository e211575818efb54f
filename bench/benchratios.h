#ifndef EOD_BENCH_BENCHRATIOS_H
#define EOD_BENCH_BENCHRATIOS_H

// What every benchmark program here shares: items and bytes per iteration, and a main that
// prints the usual console report followed by the rate of each measured path as a fraction
// of its baseline measured in the same run.

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace benchratios {

// One item per iteration, of `bytes` bytes.
inline void countItems(benchmark::State& state, int64_t bytes) {
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * bytes);
}

// "<label> = <rate of measured> / <rate of baseline>"; both are prefixes of benchmark names
// ("BM_DatagramSocket/64" for the run with argument 64).
struct Ratio {
    std::string label;
    std::string measured;
    std::string baseline;
};

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    RatioReporter(std::string preamble, std::vector<Ratio> ratios)
        : _preamble(std::move(preamble)), _ratios(std::move(ratios)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto rate = run.counters.find("items_per_second");
            if (run.error_occurred || rate == run.counters.end()) continue;
            // With --benchmark_repetitions the ratio uses the median of the repetitions, not
            // whichever repetition came last.
            if (run.run_type == Run::RT_Aggregate) {
                if (run.aggregate_name == "median") _medians[run.run_name.str()] = rate->second.value;
            } else {
                _rates[run.run_name.str()] = rate->second.value;
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::ostream& out = GetOutputStream();
        out << _preamble;
        for (const Ratio& ratio : _ratios) {
            const double measured = rateOf(ratio.measured);
            const double baseline = rateOf(ratio.baseline);
            // A path that failed or was filtered out has no rate: no ratio for it.
            if (measured > 0 && baseline > 0) {
                out << ratio.label << " = " << measured / baseline << "\n";
            }
        }
    }

  private:
    double rateOf(const std::string& prefix) const {
        for (const auto* rates : {&_medians, &_rates}) {
            for (const auto& entry : *rates) {
                if (entry.first.compare(0, prefix.size(), prefix) == 0) return entry.second;
            }
        }
        return 0;
    }

    std::string _preamble;
    std::vector<Ratio> _ratios;
    std::map<std::string, double> _rates;
    std::map<std::string, double> _medians;
};

// The body of a benchmark program's main; `preamble` is printed before the ratios.
inline int runWithRatios(int argc, char** argv, std::vector<Ratio> ratios,
                         std::string preamble = std::string()) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter(std::move(preamble), std::move(ratios));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

}  // namespace benchratios

#endif
