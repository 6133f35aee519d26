#pragma once

#include <benchmark/benchmark.h>

#include <iomanip>
#include <map>
#include <string>
#include <vector>

namespace ktl::bench {

/// Prints the usual table and then, for each case, how our time compares with each peer's. Benchmarks are named
/// "case/ktl" and "case/peer"; with repetitions the medians are compared.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            const bool isMedian = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.error_occurred || (run.run_type == Run::RT_Aggregate && !isMedian)) continue;
            if (run.run_type == Run::RT_Iteration && run.repetitions > 1) continue;
            const std::string &name = run.run_name.function_name;
            const std::size_t slash = name.rfind('/');
            if (slash == std::string::npos) continue;
            m_seconds[name.substr(0, slash)][name.substr(slash + 1)] =
                run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        for (const auto &[name, seconds] : m_seconds) {
            const auto own = seconds.find("ktl");
            if (own == seconds.end()) continue;
            for (const auto &[peer, time] : seconds) {
                if (peer != "ktl") {
                    GetOutputStream() << name << ": " << std::fixed << std::setprecision(2) << time / own->second
                                      << " times as fast as " << peer << "\n";
                }
            }
        }
    }

  private:
    std::map<std::string, std::map<std::string, double>> m_seconds;
};

}  // namespace ktl::bench
