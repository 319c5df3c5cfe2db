// How much does a property list cost over the bare parse of its XML, and does writing the settings
// of a large server stay unnoticed? Limits: twice the bare parse, and 20 ms.

#include <benchmark/benchmark.h>
#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>

#include "Report.h"
#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/XMLPropertyListReader.h"
#include "foundation/XMLPropertyListWriter.h"

namespace vt {
namespace {

constexpr double kMostTimesBareParse = 2;
constexpr double kMostMillisToWrite = 20;
constexpr int kRounds = 15;  // of which the best counts

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

void readRecords(benchmark::State& state) {
  const std::string xml = recordsAsXML();
  for (auto _ : state) {
    double bare = std::numeric_limits<double>::infinity();
    double read = bare;
    // Taken in turn, so that a busy machine slows down both.
    for (int i = 0; i < kRounds; ++i) {
      bare = std::min(bare, secondsOf([&] { parseBare(xml); }));
      read = std::min(read, secondsOf([&] { benchmark::DoNotOptimize(readXMLPropertyList(xml)); }));
    }
    state.SetIterationTime(read);
    setPeer(state, "bare parse", bare, kMostTimesBareParse);
  }
}
BENCHMARK(readRecords)
    ->Name("ReadRecordsXML5MB")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseManualTime();

void writeSettings(benchmark::State& state) {
  const Value tree = settings();
  if (!writeXMLPropertyList(tree)) state.SkipWithError("it could not be written");
  for (auto _ : state) {
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < kRounds; ++i) {
      least =
          std::min(least, secondsOf([&] { benchmark::DoNotOptimize(writeXMLPropertyList(tree)); }));
    }
    state.SetIterationTime(least);
  }
  setLimit(state, kMostMillisToWrite);
}
BENCHMARK(writeSettings)
    ->Name("WriteSettingsOf1000Users")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseManualTime();

}  // namespace
}  // namespace vt

int main(int argc, char** argv) { return vt::runBenchmarks(argc, argv); }
