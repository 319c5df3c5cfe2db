// How long does parsing a query take, and how long matching 10,000 names, or a text of 1 MB?
// Limits of parsing: 20 µs for a usual query, 5 ms for the longest.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "Report.h"
#include "metadata/query/QueryTesting.h"

namespace vt::query {
namespace {

constexpr double kUsualLimitMicros = 20;  // for a query of some 200 bytes
constexpr double kLongestLimitMillis = 5;

const char kUsualQuery[] =
    "(kMDItemFSName == \"*quarterly*\"cd || kMDItemTextContent == \"quarterly*\"cdw) && "
    "kMDItemContentTypeTree == \"public.content\" && "
    "kMDItemFSContentChangeDate >= $time.this_month(-1) && kMDItemFSSize > 4096";

void parseAgainst(benchmark::State& state, const std::string& text, double limit) {
  for (auto _ : state) {
    auto query = parseQuery(text, shippedSchema());
    if (!query) state.SkipWithError("refused");
    benchmark::DoNotOptimize(query);
  }
  setLimit(state, limit);
}

void ParseUsualQuery(benchmark::State& state) {
  parseAgainst(state, kUsualQuery, kUsualLimitMicros);
}
BENCHMARK(ParseUsualQuery)->Unit(benchmark::kMicrosecond);

void ParseLongestQuery(benchmark::State& state) {
  std::string text;
  while (text.size() + 60 < kMaximumQueryBytes)
    text += "kMDItemFSName == \"*qu\u00E4rterly*\"cd || ";
  text += "false";
  text.resize(kMaximumQueryBytes, ' ');
  parseAgainst(state, text, kLongestLimitMillis);
}
BENCHMARK(ParseLongestQuery)->Unit(benchmark::kMillisecond);

void MakeMatcher(benchmark::State& state) {
  const Query query = parsed(kUsualQuery);
  for (auto _ : state) {
    QueryMatcher matcher(query, shippedSchema(), leapDayNoon());
    benchmark::DoNotOptimize(matcher);
  }
}
BENCHMARK(MakeMatcher)->Unit(benchmark::kMicrosecond);

/// An item with nothing but a name.
class NamedItem : public ItemAttributes {
 public:
  const Value* name = nullptr;

  const Value* valueOf(std::size_t) override { return name; }
  bool anySearchableText(FunctionRef<bool(const Value&)> predicate) override {
    return predicate(*name);
  }
  const std::string* textContent() override { return nullptr; }
};

std::vector<Value> namesFromSeed() {
  const char* words[] = {"quarterly", "report", "Budget",          "holiday",
                         "IMG",       "scan",   "invoice",         "final",
                         "draft",     "Notes",  "Gr\u00F6\u00DFe", "Pr\u00E9sentation"};
  std::mt19937 random(1);
  std::vector<Value> names;
  for (int i = 0; i < 10000; ++i) {
    // The last two words are not ASCII: about one name in six is not.
    names.emplace_back(std::string(words[random() % 12]) + "_" + words[random() % 10] + " " +
                       std::to_string(random() % 10000) + ".pdf");
  }
  return names;
}

void matchNames(benchmark::State& state, const char* text) {
  const std::vector<Value> names = namesFromSeed();
  const QueryMatcher matcher(parsed(text), shippedSchema(), leapDayNoon());
  NamedItem item;
  std::size_t hits = 0;
  for (auto _ : state) {
    for (const Value& name : names) {
      item.name = &name;
      hits += matcher.matches(item) ? 1 : 0;
    }
  }
  benchmark::DoNotOptimize(hits);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}

BENCHMARK_CAPTURE(matchNames, Exact, "kMDItemFSName == \"report.pdf\"")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNames, ContainsFolded, "kMDItemFSName == \"*quart*\"cd")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNames, SuffixFolded, "kMDItemFSName == \"*.PDF\"c")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNames, WholeWords, "kMDItemFSName == \"budget\"cdw")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNames, Wildcards, "kMDItemFSName == \"*re?ort*1*.pdf\"cd")
    ->Unit(benchmark::kMicrosecond);

void MatchContent(benchmark::State& state) {
  std::string text;
  std::mt19937 random(1);
  const char* words[] = {"the", "annual", "Report", "of", "a", "company,", "budget", "2024.\n"};
  while (text.size() < 1000000) text.append(words[random() % 8]).append(" ");
  TableItem item;
  item.setText(text);
  const QueryMatcher matcher(parsed("kMDItemTextContent == \"company budget nowhere\"cdw"),
                             shippedSchema(), leapDayNoon());
  for (auto _ : state) benchmark::DoNotOptimize(item.satisfies(matcher));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(MatchContent)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vt::query

int main(int argc, char** argv) { return vt::runBenchmarks(argc, argv); }
