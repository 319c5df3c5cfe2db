// Does the index answer in a blink? Searches of a large tree by name, by type and date, and on
// behalf of a user, records built, against plocate and fd over the same files in the same run.
//
//   index_search_bench FOLDER   that script/bench-corpus has printed; root only

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "Corpus.h"
#include "ExecutedSearch.h"
#include "Report.h"
#include "directory/VTUser.h"
#include "foundation/NSLog.h"
#include "metadata/engine/IndexHits.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/engine/SearchedRows.h"
#include "metadata/engine/SubstringScanner.h"
#include "metadata/store/IndexFolder.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "platform/linux/ContentTypeTable.h"
#include "platform/linux/LinuxPlatform.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResultContainer.h"
#include "support/Places.h"

namespace vt {
namespace {

constexpr int kRounds = 7;
constexpr const char* kUser = "u2001";

template <class Work>
double bestOfRounds(Work work) {
  return bestOf(kRounds, work);
}

std::string named(const std::string& word) { return "kMDItemFSName == \"*" + word + "*\"cd"; }

/// A search by name as a process of its own, which prints what it found.
double secondsOfCommand(const Corpus& corpus, const std::string& word) {
  return secondsOfProgram(
      {builtProgram("vistaro"), "search", "--json", "--path", corpus.tree, "--raw", named(word)});
}

double secondsOfPlocate(const Corpus& corpus, const std::string& word) {
  return secondsOfProgram({"plocate", "-d", corpus.database(), "-i", "-b", word});
}

void rareWord(benchmark::State& state, const Corpus& corpus) {
  const std::string word = corpus.word("rare");
  for (auto _ : state) {
    state.SetIterationTime(
        bestOfRounds([&] { return secondsOfSearch(corpus, named(word), nullptr); }));
    setLimit(state, 4);
  }
}

void rareWordAsProcess(benchmark::State& state, const Corpus& corpus) {
  const std::string word = corpus.word("rare");
  for (auto _ : state) {
    state.SetIterationTime(bestOfRounds([&] { return secondsOfCommand(corpus, word); }));
    setPeer(state, "plocate", bestOfRounds([&] { return secondsOfPlocate(corpus, word); }), 3);
  }
}

void mediumWord(benchmark::State& state, const Corpus& corpus) {
  const std::string word = corpus.word("medium");
  for (auto _ : state) {
    state.SetIterationTime(
        bestOfRounds([&] { return secondsOfSearch(corpus, named(word), nullptr); }));
    setPeer(state, "plocate", bestOfRounds([&] { return secondsOfPlocate(corpus, word); }),
            1.0 / 4);
  }
}

void mediumWordAsProcess(benchmark::State& state, const Corpus& corpus) {
  const std::string word = corpus.word("medium");
  for (auto _ : state) {
    state.SetIterationTime(bestOfRounds([&] { return secondsOfCommand(corpus, word); }));
    setPeer(state, "plocate", bestOfRounds([&] { return secondsOfPlocate(corpus, word); }),
            1.0 / 1.5);
  }
}

void commonWordAsUser(benchmark::State& state, const Corpus& corpus) {
  const std::string word = corpus.word("common");
  const auto user = VTUser::userWithName(kUser);
  std::string groups = std::to_string(user->gid());
  for (const std::uint32_t group :
       Platform::current().identity().groupsOf(kUser, static_cast<std::uint32_t>(user->gid()))) {
    groups += "," + std::to_string(group);
  }
  const std::vector<std::string> peer = {"setpriv",
                                         "--reuid=" + std::to_string(user->uid()),
                                         "--groups=" + groups,
                                         "--regid=" + std::to_string(user->gid()),
                                         "plocate",
                                         "-d",
                                         corpus.guardedDatabase(),
                                         "-i",
                                         "-b",
                                         word};
  for (auto _ : state) {
    state.SetIterationTime(
        bestOfRounds([&] { return secondsOfSearch(corpus, named(word), kUser); }));
    setPeer(state, "plocate", bestOfRounds([&] { return secondsOfProgram(peer); }), 1.0 / 15);
  }
}

void nameAndTypeAndDate(benchmark::State& state, const Corpus& corpus) {
  const std::string word = corpus.word("common");
  const std::string query = named(word) +
                            " && kMDItemContentType == \"com.adobe.pdf\""
                            " && kMDItemContentModificationDate > $time.iso(2025-11-21)";
  for (auto _ : state) {
    state.SetIterationTime(bestOfRounds([&] { return secondsOfSearch(corpus, query, nullptr); }));
    setPeer(state, "fd",
            bestOf(3,
                   [&] {
                     return secondsOfProgram({"fdfind", "-H", "-I", "-i", "-e", "pdf",
                                              "--changed-after=2025-11-21 00:00:00", word,
                                              corpus.tree});
                   }),
            1.0 / 50);
  }
}

std::shared_ptr<const OpenIndex> openCorpus(const Corpus& corpus) {
  return openIndex(IndexFolder::open(corpus.indexFolder()).value().current().value(),
                   *contentTypesIn(Platform::current().resources()));
}

/// What judging takes of the search of the common word on behalf of a user.
void access(benchmark::State& state, const Corpus& corpus) {
  const std::shared_ptr<const OpenIndex> index = openCorpus(corpus);
  const SegmentColumns& segment = index->columns.base;
  const auto user = VTUser::userWithName(kUser);
  const auto gid = static_cast<std::uint32_t>(user->gid());
  const AccessJudge judge(Credentials(static_cast<std::uint32_t>(user->uid()), gid,
                                      Platform::current().identity().groupsOf(kUser, gid)));
  const auto folder = indexedFolderAt(segment, corpus.tree);
  std::vector<std::uint32_t> found;
  const SubstringScanner scanner(corpus.word("common"));
  for (std::uint32_t row = 0; row < segment.rowCount(); ++row) {
    if (scanner.find(segment.foldedNames[row], 0) != std::string_view::npos) found.push_back(row);
  }
  for (auto _ : state) {
    state.SetIterationTime(bestOfRounds([&] {
      std::vector<std::uint32_t> rows = found;
      return secondsOf([&] {
        const ClassVerdicts verdicts(segment, judge);
        const FolderTable folders(segment, {{*folder, corpus.tree, corpus.tree}}, verdicts);
        const SearchedRows searched(segment, folders, verdicts);
        searched.narrow(rows);
        benchmark::DoNotOptimize(rows.data());
      });
    }));
    setPeer(state, "executeQuery", bestOfRounds([&] {
              return secondsOfSearch(corpus, named(corpus.word("common")), kUser);
            }),
            0.05);
  }
}

/// Opening from nothing: folder, manifest, segment, its checks.
void openTime(benchmark::State& state, const Corpus& corpus) {
  for (auto _ : state) {
    state.SetIterationTime(bestOfRounds(
        [&] { return secondsOf([&] { benchmark::DoNotOptimize(openCorpus(corpus)); }); }));
    setLimit(state, 3);
  }
}

/// Memory of this process that no file backs, in MiB.
double ownMebibytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kibibytes = 0;
    if (word == "RssAnon:" && status >> kibibytes) return kibibytes / 1024;
  }
  return std::numeric_limits<double>::infinity();
}

/// What a search of the common word by everybody takes beside the mapped pages, its 10,000 records
/// included. To be asked before anything else was searched.
double mebibytesOfReader(const Corpus& corpus) {
  const double before = ownMebibytes();
  const auto manager = VTSearchManager::initWithUser(nullptr);
  const auto found = manager->executeQuery(
      named(corpus.word("common")),
      ObjectArray<VTSearchFolder>::make({VTConcreteSearchFolder::initWithPath(corpus.tree, "")}));
  return found->count() > 0 ? ownMebibytes() - before : std::numeric_limits<double>::infinity();
}

int run(int argc, char** argv) {
  const LogRedirection silence([](std::string_view) {});
  const Corpus corpus(argv[1]);
  corpus.indexNames();
  corpus.updatedb();
  corpus.makeGuardedDatabase();
  const PlatformScope scope(linuxPlatform(readEnvironment().value()));
  const std::shared_ptr<const OpenIndex> index = openCorpus(corpus);
  fmt::print("{} files in {} folders, {} access classes\n", index->columns.base.rowCount(),
             index->columns.base.folderCount(), index->columns.base.classes.size());
  bool isReached = printFigure("MemoryOfReader", mebibytesOfReader(corpus), "MiB", 40);
  const auto add = [&](const char* name, void (*measure)(benchmark::State&, const Corpus&)) {
    benchmark::RegisterBenchmark(
        name, [&corpus, measure](benchmark::State& state) { measure(state, corpus); })
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->UseManualTime();
  };
  add("Open", openTime);
  add("RareWordInNames", rareWord);
  add("RareWordInNamesAsProcess", rareWordAsProcess);
  add("MediumWordInNames", mediumWord);
  add("MediumWordInNamesAsProcess", mediumWordAsProcess);
  add("CommonWordAsUser", commonWordAsUser);
  add("NameAndTypeAndDate", nameAndTypeAndDate);
  add("AccessOfCommonWordAsUser", access);
  isReached = runBenchmarks(argc, argv) == 0 && isReached;
  return isReached ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: index_search_bench FOLDER\n");
    return 2;
  }
  return vt::run(argc, argv);
}
