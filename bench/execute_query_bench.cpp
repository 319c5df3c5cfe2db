// What does a search cost beside the index: 10,000 hits into records and groups?
//
// The index is a table in memory, so that the sort by the comparator, the record building and the
// grouping are all that is measured. Two limits: 25 ms for the whole call, and 2 µs for each hit.

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <random>

#include "Report.h"
#include "foundation/NSLog.h"
#include "platform/Attributes.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/SearchWorld.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"

namespace vt {
namespace {

constexpr unsigned kHits = 10000;
constexpr int kRounds = 51;
constexpr double kCallLimitMillis = 25;
constexpr double kHitLimitMicros = 2;

// Paths as long as those of a file server, and keys and type trees shared as an index shares them.
void fill(MemoryMetadataIndex& index) {
  const Key path(kMDItemPath);
  const Key name(kMDItemDisplayName);
  const Key modified(kMDItemContentModificationDate);
  const Key tree(kMDItemContentTypeTree);
  const Key size(kMDItemFSSize);
  const Key used(kMDItemLastUsedDate);
  const std::array trees = {
      Array::make({"public.plain-text", "public.text", "public.data", "public.item"}),
      Array::make({"public.jpeg", "public.image", "public.data", "public.item"}),
      Array::make({"com.apple.quicktime-movie", "public.movie", "public.data", "public.item"}),
      Array::make({"com.example.unknown", "public.data", "public.item"}),
  };
  std::mt19937 random(20011);
  for (unsigned i = 0; i < kHits; ++i) {
    const std::string fileName = "letter number " + std::to_string(i) + ".txt";
    auto hit = std::make_shared<Dictionary>();
    hit->append(path, "/srv/shares/projects/customer-" + std::to_string(i % 97) +
                          "/correspondence/" + fileName);
    hit->append(name, fileName);
    hit->append(modified, Date{std::chrono::seconds{random()}});
    hit->append(tree, trees[i % trees.size()]);
    hit->append(size, random());
    hit->append(used, Date{std::chrono::seconds{random()}});
    index.addHit(std::move(hit));
  }
}

// Of the processor: nothing here waits, and a busy machine should not count against us.
double secondsOfProcessor() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Measures the median of some calls, as the part of it that falls to each of `shares`.
void executeQuery(benchmark::State& state, unsigned shares, double limit) {
  SearchWorld world;
  world.index->stopRecording();
  fill(*world.index);
  const LogRedirection silence([](std::string_view) {});
  const auto manager = VTSearchManager::initWithUser(world.ann());
  const auto folders = ObjectArray<VTSearchFolder>::make(
      {VTConcreteSearchFolder::initWithPath("/srv/shares", "Shares")});

  for (auto _ : state) {
    std::array<double, kRounds> seconds{};
    for (double& taken : seconds) {
      const double start = secondsOfProcessor();
      const auto container = manager->executeQuery("kMDItemFSSize > 0", folders);
      taken = secondsOfProcessor() - start;
      if (container->count() != 4) state.SkipWithError("not every kind was found");
    }
    std::ranges::nth_element(seconds, seconds.begin() + kRounds / 2);
    state.SetIterationTime(seconds[kRounds / 2] / shares);
  }
  setLimit(state, limit);
}

BENCHMARK_CAPTURE(executeQuery, whole, 1, kCallLimitMillis)
    ->Name("ExecuteQueryOf10000Hits")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseManualTime();
BENCHMARK_CAPTURE(executeQuery, share, kHits, kHitLimitMicros)
    ->Name("ExecuteQueryPerHit")
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(1)
    ->UseManualTime();

}  // namespace
}  // namespace vt

int main(int argc, char** argv) { return vt::runBenchmarks(argc, argv); }
