// Are words found in files as fast as names are? Looks into all text files of a tree, and searches
// for words, beginnings and phrases, records built, against ripgrep over the same files in the same
// run, and against limits.
//
//   text_bench FOLDER   that script/bench-corpus has printed, of files with content; root only

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Corpus.h"
#include "ExecutedSearch.h"
#include "Report.h"
#include "foundation/NSLog.h"
#include "metadata/catalogue/CatalogueFile.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"

namespace vt {
namespace {

constexpr int kRounds = 7;

// A fifth of what the faster of the desktop indexers recoll and tracker takes to find a rare,
// medium and common word among 100,000 such files, and a third of tracker's time and half of its
// space to index them: 96 s and 351 MiB.
constexpr double kRareMillis = 8.0 / 5;
constexpr double kMediumMillis = 29.0 / 5;
constexpr double kCommonMillis = 123.0 / 5;
constexpr double kIndexingSeconds = 96.0 / 3;
constexpr double kMebibytes = 351.0 / 2;

std::string holding(const std::string& words) {
  return "kMDItemTextContent == \"" + words + "\"cdw";
}

double millisOf(const Corpus& corpus, const std::string& words) {
  return 1000 * bestOf(kRounds, [&] { return secondsOfSearch(corpus, holding(words), nullptr); });
}

double millisOfRipgrep(const Corpus& corpus, const std::string& word) {
  return 1000 * bestOf(3, [&] {
           return secondsOfProgram(
               {"rg", "--no-ignore", "--hidden", "-l", "-i", "-w", word, corpus.tree});
         });
}

bool compare(const Corpus& corpus, const std::string& name, const std::string& word,
             double limitMillis) {
  const double measured = millisOf(corpus, word);
  const bool isBelow = printFigure(name, measured, "ms", limitMillis);
  return printFigure(name, measured, "ms", "ripgrep", millisOfRipgrep(corpus, word), 1.0 / 5) &&
         isBelow;
}

double mebibytesOfIndex(const Corpus& corpus) {
  std::uintmax_t bytes = 0;
  for (const auto& file : std::filesystem::directory_iterator(corpus.indexFolder())) {
    bytes += file.file_size();
  }
  return static_cast<double>(bytes) / (1024 * 1024);
}

int run(const Corpus& corpus) {
  const LogRedirection silence([](std::string_view) {});
  corpus.indexNames();  // for the caches of the kernel
  const ProgramRun made = corpus.index();
  const ProgramRun again = corpus.indexAgain();
  const PlatformScope scope(linuxPlatform(readEnvironment().value()));
  const std::string common = corpus.contentWord("common");
  const std::string medium = corpus.contentWord("medium");
  const bool reached[] = {
      printFigure("IndexingOfTexts", made.seconds, "s", kIndexingSeconds),
      printFigure("IndexingAgain", again.seconds, "s", "IndexingOfTexts", made.seconds, 0.2),
      printFigure("MemoryOfIndexer", std::max(made.mebibytes, again.mebibytes), "MiB", 250),
      printFigure("SizeOfIndex", mebibytesOfIndex(corpus), "MiB", kMebibytes),
      compare(corpus, "RareWordInTexts", corpus.contentWord("rare"), kRareMillis),
      compare(corpus, "MediumWordInTexts", medium, kMediumMillis),
      compare(corpus, "CommonWordInTexts", common, kCommonMillis),
      printFigure("BeginningOfWords", millisOf(corpus, corpus.contentPrefix() + "*"), "ms",
                  kCommonMillis),
      printFigure("BeginningOfThreeLetters",
                  millisOf(corpus, corpus.contentPrefix().substr(0, 3) + "*"), "ms", kCommonMillis),
  };
  return std::ranges::all_of(reached, std::identity()) ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: text_bench FOLDER\n");
    return 2;
  }
  return vt::run(vt::Corpus(argv[1]));
}
