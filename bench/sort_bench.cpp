// How long it takes to sort a group of 10,000 records by name, as people read names: without regard
// to case, by the language. The limit is 30 ms. Sorting the same names by their bytes is measured
// beside it, for what the language costs.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "Report.h"
#include "search/RecordSorting.h"

namespace vt {
namespace {

constexpr int kRecords = 10'000;
constexpr double kLimitMillis = 30;
constexpr std::uint32_t kSeed = 20261121;

/// Names such as people give: words, numbers, capitals, here and there an umlaut.
std::vector<std::string> names() {
  static constexpr const char* kWords[] = {
      "Report",  "invoice", "Übersicht", "draft",  "PHOTO", "meeting", "Budget",   "ärger",
      "summary", "Straße",  "plan",      "Résumé", "scan",  "letter",  "Zeichnung"};
  static constexpr const char* kExtensions[] = {"pdf", "txt", "JPG", "docx", "png"};
  std::mt19937 random(kSeed);
  const auto pick = [&](const auto& list) { return list[random() % std::size(list)]; };
  std::vector<std::string> result;
  for (int i = 0; i < kRecords; ++i) {
    result.push_back(std::string(pick(kWords)) + ' ' + pick(kWords) + ' ' +
                     std::to_string(random() % 2000) + '.' + pick(kExtensions));
  }
  return result;
}

void SortBytesOf10000Names(benchmark::State& state) {
  const std::vector<std::string> all = names();
  for (auto _ : state) {
    std::vector<std::string> sorted = all;
    std::ranges::sort(sorted);
    benchmark::DoNotOptimize(sorted);
  }
}
BENCHMARK(SortBytesOf10000Names)->Unit(benchmark::kMillisecond)->UseRealTime();

void Sort10000RecordsByName(benchmark::State& state) {
  ObjectArray<Dictionary> records;
  for (const std::string& name : names()) {
    records.append(Dictionary::make({{"kMDItemPath", "/" + name}, {"kMDItemDisplayName", name}}));
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(sortedRecords(records, "kMDItemDisplayName", /*descending=*/false));
  }
  setLimit(state, kLimitMillis);
}
BENCHMARK(Sort10000RecordsByName)->Unit(benchmark::kMillisecond)->UseRealTime();

void Sort10000RecordsBySize(benchmark::State& state) {
  ObjectArray<Dictionary> records;
  std::mt19937 random(kSeed);
  for (int i = 0; i < kRecords; ++i) {
    records.append(Dictionary::make({{"kMDItemFSSize", std::uint64_t{random()}}}));
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(sortedRecords(records, "kMDItemFSSize", /*descending=*/false));
  }
  setLimit(state, kLimitMillis);
}
BENCHMARK(Sort10000RecordsBySize)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vt

int main(int argc, char** argv) { return vt::runBenchmarks(argc, argv); }
