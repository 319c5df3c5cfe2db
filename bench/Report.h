#pragma once

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <limits>
#include <optional>
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

/// Prints a figure in one line:
///
///     name  measured unit  limit 20.00 unit  ratio 0.12  ok
///
/// with the peer's name and value in the place of a limit, and "MISSED" in the place of "ok". The
/// ratio is measured / limit or peer: lower is better. Tells whether it is at most `mostTimes`;
/// without that there is nothing to miss.
inline bool printFigure(const std::string& name, double measured, const std::string& unit,
                        const std::string& with, double value,
                        std::optional<double> mostTimes = std::nullopt) {
  const double ratio = value > 0 ? measured / value : std::numeric_limits<double>::infinity();
  const bool isReached = !mostTimes || ratio <= *mostTimes;
  fmt::print("{:<40} {:>9.2f} {}  {} {:.2f} {}  ratio {:.2f}", name, measured, unit, with, value,
             unit, ratio);
  if (mostTimes && *mostTimes != 1) fmt::print(" of at most {:.2f}", *mostTimes);
  fmt::print("{}\n", !mostTimes ? "" : isReached ? "  ok" : "  MISSED");
  std::fflush(stdout);
  return isReached;
}

/// The same with a limit.
inline bool printFigure(const std::string& name, double measured, const std::string& unit,
                        double limit) {
  return printFigure(name, measured, unit, "limit", limit, 1);
}

/// Prints the figures of benchmarks as printFigure() does, and rates, or nothing, after one that is
/// compared with nothing.
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
    const std::string name = nameOf(run);
    const double measured = run.GetAdjustedRealTime();
    const char* unit = benchmark::GetTimeUnitString(run.time_unit);
    if (const auto limit = run.counters.find("limit"); limit != run.counters.end()) {
      allReached_ = printFigure(name, measured, unit, limit->second) && allReached_;
    } else if (const auto peer = run.counters.find("peerSeconds"); peer != run.counters.end()) {
      const double inUnit = peer->second * benchmark::GetTimeUnitMultiplier(run.time_unit);
      allReached_ = printFigure(name, measured, unit, run.report_label, inUnit,
                                run.counters.at("mostTimes")) &&
                    allReached_;
    } else {
      fmt::print("{:<40} {:>9.2f} {}", name, measured, unit);
      printRates(run);
      fmt::print("\n");
      std::fflush(stdout);
    }
  }

  // Without the "/real_time" and the like that tell how it was measured.
  static std::string nameOf(const Run& run) {
    return run.run_name.args.empty() ? run.run_name.function_name
                                     : run.run_name.function_name + "/" + run.run_name.args;
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
