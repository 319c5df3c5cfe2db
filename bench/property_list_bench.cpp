// How much does a property list cost over the bare parse of its XML, and does saving the settings
// of a large server stay unnoticed? Prints both against their limits, then the figures one by one.
#include <benchmark/benchmark.h>
#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/XMLPropertyListReader.h"
#include "foundation/XMLPropertyListWriter.h"

namespace vt {
namespace {

constexpr double kMostTimesBareParse = 2;
constexpr double kMostMillisToSave = 20;

constexpr unsigned kSeed = 1;

std::string words(std::mt19937& random, int count) {
  static constexpr const char* kWords[] = {"report",  "annual", "draft & notes", "M\xC3\xBCller",
                                           "invoice", "2026",   "final",         "archive"};
  std::string text;
  for (int i = 0; i < count; ++i) text += (i > 0 ? " " : "") + std::string(kWords[random() % 8]);
  return text;
}

// A list of small records, 5 MB of XML.
std::string recordsAsXML() {
  std::mt19937 random(kSeed);
  const auto records = Array::make();
  for (int i = 0; i < 18'000; ++i) {
    records->append(Dictionary::make({{"title", words(random, 3)},
                                      {"query", words(random, 5)},
                                      {"count", static_cast<std::int64_t>(random())},
                                      {"weight", static_cast<double>(random()) / 7},
                                      {"download", random() % 2 == 0}}));
  }
  return *writeXMLPropertyList(records);
}

// What a server of a thousand users stores: preferences of each, and some saved searches.
Value settings() {
  std::mt19937 random(kSeed);
  const auto users = Dictionary::make();
  for (int i = 0; i < 1000; ++i) {
    const auto searches = Array::make();
    for (int j = 0; j < 5; ++j) {
      searches->append(Dictionary::make({{"title", words(random, 2)},
                                         {"query", words(random, 8)},
                                         {"searchFolderTitle", words(random, 1)}}));
    }
    users->set(fmt::format("{}", 1000 + i),
               Dictionary::make({{"resultsPerPage", 25},
                                 {"defaultAction", "download"},
                                 {"defaultSearchKind", words(random, 1)},
                                 {"savedSearches", searches}}));
  }
  return Dictionary::make({{"serverPort", 8080}, {"users", users}});
}

void parseBare(const std::string& xml) {
  XML_Parser parser = XML_ParserCreate(nullptr);
  benchmark::DoNotOptimize(
      XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), /*isFinal=*/XML_TRUE));
  XML_ParserFree(parser);
}

double leastMillis(const std::function<void()>& work, int rounds) {
  double least = std::numeric_limits<double>::infinity();
  for (int i = 0; i < rounds; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    least = std::min(least, taken.count());
  }
  return least;
}

void report() {
  constexpr int kRounds = 15;
  const std::string xml = recordsAsXML();
  // Taken in turn, so that a busy machine slows down both.
  double bare = std::numeric_limits<double>::infinity();
  double read = bare;
  for (int i = 0; i < kRounds; ++i) {
    bare = std::min(bare, leastMillis([&] { parseBare(xml); }, 1));
    read =
        std::min(read, leastMillis([&] { benchmark::DoNotOptimize(readXMLPropertyList(xml)); }, 1));
  }
  fmt::print("read {:.1f} MB: {:.1f} ms, bare parse {:.1f} ms: {:.2f}x (at most {:.0f}x)\n",
             static_cast<double>(xml.size()) / 1e6, read, bare, read / bare, kMostTimesBareParse);
  const Value tree = settings();
  const std::size_t size = writeXMLPropertyList(tree)->size();
  const double write =
      leastMillis([&] { benchmark::DoNotOptimize(writeXMLPropertyList(tree)); }, kRounds);
  fmt::print("write settings of 1,000 users, {:.1f} MB: {:.1f} ms (at most {:.0f} ms)\n",
             static_cast<double>(size) / 1e6, write, kMostMillisToSave);
}

void readRecords(benchmark::State& state) {
  const std::string xml = recordsAsXML();
  for (auto _ : state) benchmark::DoNotOptimize(readXMLPropertyList(xml));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * xml.size()));
}
BENCHMARK(readRecords)->Name("ReadRecordsXML5MB")->Unit(benchmark::kMillisecond);

void parseRecordsBare(benchmark::State& state) {
  const std::string xml = recordsAsXML();
  for (auto _ : state) parseBare(xml);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * xml.size()));
}
BENCHMARK(parseRecordsBare)->Name("ParseRecordsBare5MB")->Unit(benchmark::kMillisecond);

void writeSettings(benchmark::State& state) {
  const Value tree = settings();
  for (auto _ : state) benchmark::DoNotOptimize(writeXMLPropertyList(tree));
}
BENCHMARK(writeSettings)->Name("WriteSettingsOf1000Users")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  vt::report();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
