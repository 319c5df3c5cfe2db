#pragma once

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

namespace vt {

/// Compares what `state` measures with a limit, in the unit of time of that benchmark.
inline void setLimit(benchmark::State& state, double limit) { state.counters["limit"] = limit; }

/// Compares what `state` measures with the time that `peer` took for the same work in the same run,
/// of which it may take `mostTimes`. In seconds.
inline void setPeer(benchmark::State& state, const std::string& peer, double seconds,
                    double mostTimes) {
  state.counters["peerSeconds"] = seconds;
  state.counters["mostTimes"] = mostTimes;
  state.SetLabel(peer);
}

/// How long `work` takes by the clock on the wall, in seconds.
template <class Work>
double secondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Prints each figure in one line:
///
///     name  measured unit  limit 20.00 unit  ratio 0.12  ok
///
/// with the peer's name and time in the place of a limit, "MISSED" in the place of "ok", and rates,
/// or nothing, after a figure that is compared with nothing. The ratio is measured / limit or peer:
/// lower is better.
class Report final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) print(run);
  }

  bool allReached() const { return allReached_; }

 private:
  void print(const Run& run) {
    if (run.error_occurred) {
      allReached_ = false;
      fmt::print("{:<40} FAILED: {}\n", run.benchmark_name(), run.error_message);
      return;
    }
    const double measured = run.GetAdjustedRealTime();
    const char* unit = benchmark::GetTimeUnitString(run.time_unit);
    fmt::print("{:<40} {:>9.2f} {}", nameOf(run), measured, unit);
    if (const auto limit = run.counters.find("limit"); limit != run.counters.end()) {
      printComparison("limit", limit->second, unit, measured, /*mostTimes=*/1);
    } else if (const auto peer = run.counters.find("peerSeconds"); peer != run.counters.end()) {
      const double inUnit = peer->second * benchmark::GetTimeUnitMultiplier(run.time_unit);
      printComparison(run.report_label, inUnit, unit, measured, run.counters.at("mostTimes"));
    } else {
      printRates(run);
    }
    fmt::print("\n");
    std::fflush(stdout);
  }

  // Without the "/real_time" and the like that tell how it was measured.
  static std::string nameOf(const Run& run) {
    return run.run_name.args.empty() ? run.run_name.function_name
                                     : run.run_name.function_name + "/" + run.run_name.args;
  }

  void printComparison(const std::string& with, double value, const char* unit, double measured,
                       double mostTimes) {
    const double ratio = value > 0 ? measured / value : std::numeric_limits<double>::infinity();
    const bool reached = ratio <= mostTimes;
    allReached_ = allReached_ && reached;
    fmt::print("  {} {:.2f} {}  ratio {:.2f}", with, value, unit, ratio);
    if (mostTimes != 1) fmt::print(" of at most {:.2f}", mostTimes);
    fmt::print("  {}", reached ? "ok" : "MISSED");
  }

  static void printRates(const Run& run) {
    for (const auto& [name, counter] : run.counters) {
      fmt::print("  {} {:.3g}", name, counter.value);
    }
  }

  bool allReached_ = true;
};

/// Runs the benchmarks of this program and prints their figures; what main() answers: 0 unless a
/// limit was missed or a benchmark failed.
inline int runBenchmarks(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Report report;
  benchmark::RunSpecifiedBenchmarks(&report);
  benchmark::Shutdown();
  return report.allReached() ? 0 : 1;
}

}  // namespace vt
