// How long until what has changed is found? Updates an index of a large tree after changes of some
// files, against updatedb, which goes through all folders in the same run to take note of changes.
//
//   index_update_bench FOLDER   that script/bench-corpus has printed; root only
//
// The tree is left alone: what changes is a folder beside it, which is indexed with it.

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Corpus.h"
#include "Report.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/extract/Extractors.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/update/IndexUpdater.h"
#include "platform/Platform.h"
#include "platform/linux/ContentTypeTable.h"
#include "platform/linux/Environment.h"
#include "platform/linux/ForkedRunner.h"
#include "platform/linux/LinuxPlatform.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr int kChangedFiles = 1000;
constexpr int kRounds = 5;
constexpr int kMerges = 20;

/// Files beside those of the corpus, in 100 folders; gone in the end.
class ChangedFiles {
 public:
  ChangedFiles() : path_(std::filesystem::canonical(place_.path())) {
    for (int folder = 0; folder < 100; ++folder) {
      std::filesystem::create_directories(path_ + "/big/folder " + std::to_string(folder));
    }
    for (int file = 0; file < 20 * kChangedFiles; ++file) std::ofstream(pathOf(file)) << file;
  }

  const std::string& path() const { return path_; }
  std::string path(const std::string& name) const { return path_ + "/" + name; }
  std::string pathOf(int file) const {
    return fmt::format("{}/big/folder {}/file {}.txt", path_, file % 100, file);
  }
  /// Writes into some files, and says so.
  FileChanges change(int first, int count) const {
    FileChanges changes;
    for (int file = first; file < first + count; ++file) {
      std::ofstream(pathOf(file), std::ios::app) << "changed ";
      changes.entries.push_back(pathOf(file));
    }
    return changes;
  }

 private:
  TemporaryFolder place_;
  std::string path_;
};

/// What the quickest of some updates took.
class Quickest {
 public:
  explicit Quickest(IndexUpdater& updater) : updater_(updater) {}

  void apply(const FileChanges& changes) {
    const auto report = updater_.apply(changes);
    if (!report) throw std::runtime_error(report.error().reason);
    if (report->rowsAdded == 0) throw std::runtime_error("nothing was found to have changed");
    seconds = std::min(seconds, report->time.count());
  }

  double seconds = 1e9;

 private:
  IndexUpdater& updater_;
};

/// What updates took while a merge followed the other.
class Merges {
 public:
  explicit Merges(IndexUpdater& updater) : updater_(updater) {}

  void apply(const FileChanges& changes) {
    const auto report = updater_.apply(changes);
    if (!report) throw std::runtime_error(report.error().reason);
    if (report->mergeError) throw std::runtime_error(report->mergeError->reason);
    ++updates;
    longest = std::max(longest, report->time.count());
    longestPublishing = std::max(longestPublishing, report->publishing.count());
    if (updater_.isMerging() && !wasMerging_) began_ = Clock::now();
    wasMerging_ = updater_.isMerging();
    if (!report->hasMerged) return;
    ++count;
    longestTakingUp = std::max(longestTakingUp, report->time.count());
    seconds += std::chrono::duration<double>(Clock::now() - began_).count();
  }

  int count = 0;
  int updates = 0;
  double longest = 0;
  double longestPublishing = 0;
  double longestTakingUp = 0;
  double seconds = 0;  // of all merges, each from its beginning until it was taken up

 private:
  using Clock = std::chrono::steady_clock;

  IndexUpdater& updater_;
  Clock::time_point began_;
  bool wasMerging_ = false;
};

int run(const Corpus& corpus) {
  const std::shared_ptr<const ContentTypes> types = contentTypesIn(Platform::current().resources());
  const Extractors extractors = builtInExtractors(*types);
  const ChangedFiles files;
  runMeasured({VT_PROGRAM, "index", "--once", corpus.tree, files.path()});
  corpus.updatedb();
  double peer = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    peer = std::min(peer, corpus.updatedbAgain().seconds);
  }

  const IndexFolder folder = IndexFolder::open(corpus.indexFolder()).value();
  const IndexLock lock = folder.lock().value();
  IndexUpdater::Options options;
  options.leastChanged = 1U << 31;  // not before the merge is what is measured
  IndexUpdater updater(folder, lock, *types, &extractors, options);
  const double first = secondsOf([&] { updater.apply(files.change(0, 1)).value(); });
  Quickest one(updater);
  Quickest many(updater);
  Quickest renamed(updater);
  for (int round = 0; round < kRounds; ++round) one.apply(files.change(round, 1));
  for (int round = 0; round < kRounds; ++round) {
    many.apply(files.change(round * kChangedFiles, kChangedFiles));
  }
  const double texts = secondsOf([&] {
    const auto looked = updater.lookIntoFiles([](const ContentCounts&) { return true; });
    if (!looked) throw std::runtime_error(looked.error().reason);
    fmt::print("{} texts\n", looked->done);
  });
  for (int round = 0; round < kRounds; ++round) {
    const std::string from = files.path(round % 2 == 0 ? "big" : "renamed");
    const std::string to = files.path(round % 2 == 0 ? "renamed" : "big");
    std::filesystem::rename(from, to);
    renamed.apply({{from, to}, {}, {}});
  }
  std::filesystem::rename(files.path("renamed"), files.path("big"));
  renamed.apply({{files.path("renamed"), files.path("big")}, {}, {}});

  ForkedRunner runner;
  options.leastChanged = 0;
  options.mostChangedPerMille = 0;
  options.runner = &runner;
  IndexUpdater merging(folder, lock, *types, &extractors, options);
  merging.apply({}).value();
  Merges merges(merging);
  while (merges.count < kMerges)
    merges.apply(files.change(merges.updates % 20 * kChangedFiles, kChangedFiles));
  const bool reached[] = {
      printFigure("OneChangedFile", 1000 * one.seconds, "ms", "limit", 100, 1),
      printFigure("ThousandChangedFiles", 1000 * many.seconds, "ms", "limit", 1000, 1),
      printFigure("ThousandChangedFiles", 1000 * many.seconds, "ms", "updatedb", 1000 * peer, 0.2),
      printFigure("TextsOfChangedFiles", texts / kRounds, "s", "limit", 10, 1),
      printFigure("RenamedFolderOf20000Files", 1000 * renamed.seconds, "ms", "limit", 1000, 1),
      printFigure("LongestUpdateWhileMerging", 1000 * merges.longest, "ms", "limit", 500, 1),
  };
  printFigure("LongestUntilFound", 1000 * merges.longestPublishing, "ms", "updatedb", 1000 * peer);
  printFigure("UpdateThatTakesUpAMerge", 1000 * merges.longestTakingUp, "ms", "updatedb",
              1000 * peer);
  printFigure("Merge", 1000 * merges.seconds / merges.count, "ms", "updatedb", 1000 * peer);
  fmt::print("{} merges, {} updates of {} files meanwhile\n", merges.count, merges.updates,
             kChangedFiles);
  printFigure("FirstUpdateOfAProcess", 1000 * first, "ms", "updatedb", 1000 * peer);
  return std::ranges::all_of(reached, std::identity()) ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: index_update_bench FOLDER\n");
    return 2;
  }
  const vt::Corpus corpus(argv[1]);
  const vt::PlatformScope scope(vt::linuxPlatform(vt::readEnvironment().value()));
  return vt::run(corpus);
}
