// Are words in files found faster than by what desktops have? Looks into the files of a tree, and
// searches them for words, against recoll, tracker and ripgrep over the same files in the same run.
// Searches here are in this process, records built; those of the peers are whole processes that
// list the files. Takes some ten minutes.
//
//   peers_bench FOLDER   that script/bench-corpus has printed, of files with content; root only

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <string>
#include <utility>

#include "Corpus.h"
#include "DesktopIndexers.h"
#include "ExecutedSearch.h"
#include "Report.h"
#include "foundation/NSLog.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"

namespace vt {
namespace {

constexpr int kRounds = 5;

/// A word against each peer, of which the quickest may take five times as long.
bool compareWord(const Corpus& corpus, const Recoll& recoll, const Tracker& tracker,
                 const char* frequency) {
  const std::string word = corpus.contentWord(frequency);
  const std::string query = "kMDItemTextContent == \"" + word + "\"cdw";
  const double measured =
      1000 * bestOf(kRounds, [&] { return secondsOfSearch(corpus, query, nullptr); });
  const std::pair<const char*, double> peers[] = {
      {"recoll", bestOf(kRounds, [&] { return recoll.secondsOfSearch(word); })},
      {"tracker", bestOf(kRounds, [&] { return tracker.secondsOfSearch(word); })},
      {"ripgrep", bestOf(kRounds,
                         [&] {
                           return secondsOfProgram({"rg", "--no-ignore", "--hidden", "-l", "-i",
                                                    "-w", word, corpus.tree});
                         })},
  };
  bool isReached = true;
  for (const auto& [name, seconds] : peers) {
    isReached = printFigure(fmt::format("{}Word", frequency), measured, "ms", name, 1000 * seconds,
                            1.0 / 5) &&
                isReached;
  }
  return isReached;
}

int run(const Corpus& corpus) {
  const LogRedirection silence([](std::string_view) {});
  Recoll recoll(corpus.tree);
  Tracker tracker(corpus.tree);
  corpus.indexNames();  // for the caches of the kernel
  const double indexing = corpus.index().seconds;
  const double size = mebibytesIn(corpus.indexFolder());
  const double trackers = tracker.secondsOfIndexing();
  const double recolls = recoll.secondsOfIndexing();
  bool isReached[] = {
      printFigure("Indexing", indexing, "s", "tracker", trackers, 1.0 / 3),
      printFigure("Indexing", indexing, "s", "recoll", recolls),
      printFigure("SizeOfIndex", size, "MiB", "tracker", tracker.mebibytes(), 1.0 / 2),
      printFigure("SizeOfIndex", size, "MiB", "recoll", recoll.mebibytes()),
      true,
  };
  const PlatformScope scope(linuxPlatform(readEnvironment().value()));
  corpus.indexAgain();  // fresh, however long the peers took
  for (const char* frequency : {"rare", "medium", "common"}) {
    isReached[4] = compareWord(corpus, recoll, tracker, frequency) && isReached[4];
  }
  return std::ranges::all_of(isReached, std::identity()) ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: peers_bench FOLDER\n");
    return 2;
  }
  try {
    return vt::run(vt::Corpus(argv[1]));
  } catch (const std::exception& error) {
    fmt::print(stderr, "peers_bench: {}\n", error.what());
    return 1;
  }
}
