// Are words found in files as fast as names are? Looks into all files of a tree, of whatever
// format, and again into a thousand that have changed, and searches for words and their beginnings,
// records built, against ripgrep over the same files in the same run, and against limits.
//
//   text_bench FOLDER   that script/bench-corpus has printed, of files with content; root only

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Corpus.h"
#include "ExecutedSearch.h"
#include "Report.h"
#include "foundation/NSLog.h"
#include "metadata/catalogue/CatalogueFile.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"
#include "support/TemporaryFolder.h"

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
constexpr double kMostMemoryMebibytes = 250;

constexpr std::size_t kChangedFiles = 1000;
constexpr double kChangesSeconds = 10;

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

/// That many files of the tree that are not empty, from all over it.
std::vector<std::filesystem::path> someFilesOf(const std::string& tree, std::size_t count) {
  std::vector<std::filesystem::path> all;
  for (const auto& file : std::filesystem::recursive_directory_iterator(tree)) {
    if (file.is_regular_file() && file.file_size() > 0) all.push_back(file.path());
  }
  if (all.size() < count) throw std::runtime_error("the tree has too few files with content");
  std::vector<std::filesystem::path> some;
  for (std::size_t i = 0; i < count; ++i) some.push_back(all[i * all.size() / count]);
  return some;
}

/// How long it takes to index a tree again after all of its files, kChangedFiles copied from the
/// corpus, have changed.
double secondsOfChanges(const Corpus& corpus) {
  const TemporaryFolder place;
  const std::filesystem::path tree = place.path() / "tree";
  std::filesystem::create_directory(tree);
  std::filesystem::permissions(place.path(), std::filesystem::perms(0755));
  std::vector<std::filesystem::path> copies;
  for (const auto& file : someFilesOf(corpus.tree, kChangedFiles)) {
    copies.push_back(tree / (std::to_string(copies.size()) + file.extension().string()));
    std::filesystem::copy_file(file, copies.back());
    struct stat status{};
    if (::stat(file.c_str(), &status) != 0 ||
        ::chown(copies.back().c_str(), status.st_uid, status.st_gid) != 0) {
      throw std::runtime_error("cannot give files to their owners");
    }
  }
  const std::string index = place / "index";
  setenv("VISTARO_INDEX", index.c_str(), 1);
  const auto indexTree = [&] {
    return runMeasured({builtProgram("vistaro"), "index", "--once", tree}).seconds;
  };
  indexTree();
  for (const auto& copy : copies) {
    const auto changed = std::filesystem::last_write_time(copy) + std::chrono::seconds(1);
    std::filesystem::last_write_time(copy, changed);
  }
  const double seconds = indexTree();
  setenv("VISTARO_INDEX", corpus.indexFolder().c_str(), 1);
  return seconds;
}

int run(const Corpus& corpus) {
  const LogRedirection silence([](std::string_view) {});
  corpus.indexNames();  // for the caches of the kernel
  const ProgramRun made = corpus.index();
  const ProgramRun again = corpus.indexAgain();
  const double changes = secondsOfChanges(corpus);
  const PlatformScope scope(linuxPlatform(readEnvironment().value()));
  const std::string common = corpus.contentWord("common");
  const std::string medium = corpus.contentWord("medium");
  const bool reached[] = {
      printFigure("IndexingOfAllFormats", made.seconds, "s", kIndexingSeconds),
      printFigure("IndexingAgain", again.seconds, "s", "IndexingOfAllFormats", made.seconds, 0.2),
      printFigure("MemoryOfIndexer", std::max(made.mebibytes, again.mebibytes), "MiB",
                  kMostMemoryMebibytes),
      printFigure("ThousandChangedFiles", changes, "s", kChangesSeconds),
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
