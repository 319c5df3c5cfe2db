// How long until what has changed is found? Updates an index of a large tree after changes of some
// files, against updatedb, which goes through all folders in the same run to take note of changes.
//
//   index_update_bench FOLDER   that script/bench-corpus has printed; root only
//   index_update_bench FOLDER INDEX BESIDE
//
// The tree is left alone: what changes is a folder beside it, which is indexed with it. Where
// making the index takes long, it is made before: INDEX is one of the tree and of the empty folder
// BESIDE. Nothing is then compared with updatedb.

#include <fmt/format.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <system_error>
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
#include "support/Places.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr int kChangedFiles = 1000;
constexpr int kRounds = 5;
constexpr int kMerges = 20;
constexpr int kLongMerges = 5;

/// Files beside those of the corpus, in 100 folders; gone in the end.
class ChangedFiles {
 public:
  /// In a folder that is there, which is left empty; nullptr: in one that is made.
  explicit ChangedFiles(const char* place)
      : path_(std::filesystem::canonical(place == nullptr ? place_.path() : place)) {
    for (int folder = 0; folder < 100; ++folder) {
      std::filesystem::create_directories(path_ + "/big/folder " + std::to_string(folder));
    }
    for (int file = 0; file < 20 * kChangedFiles; ++file) std::ofstream(pathOf(file)) << file;
  }
  ChangedFiles(const ChangedFiles&) = delete;
  ChangedFiles& operator=(const ChangedFiles&) = delete;
  ~ChangedFiles() {
    std::error_code ignored;
    std::filesystem::remove_all(path("big"), ignored);
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

/// Memory of this process in MiB, without pages of files, which the kernel takes when it needs
/// them.
double ownMemory() {
  std::ifstream status("/proc/self/status");
  double kib = 0;
  for (std::string line; std::getline(status, line);) {
    for (const char* const kind : {"RssAnon:", "RssShmem:"}) {
      if (line.starts_with(kind)) kib += std::stod(line.substr(std::strlen(kind)));
    }
  }
  return kib / 1024;
}

/// Most memory at a time of processes that were waited for, in MiB, pages of files included.
double mostMemoryOfChildren() {
  rusage usage{};
  ::getrusage(RUSAGE_CHILDREN, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// What updates took while a merge followed the other.
class Merges {
 public:
  explicit Merges(IndexUpdater& updater) : updater_(updater) {}

  void apply(const FileChanges& changes) {
    const auto report = updater_.apply(changes);
    if (!report) throw std::runtime_error(report.error().reason);
    if (report->mergeError) throw std::runtime_error(report->mergeError->reason);
    ++updates;
    mostMemory = std::max(mostMemory, ownMemory());
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
  double mostMemory = 0;
  double seconds = 0;  // of all merges, each from its beginning until it was taken up

 private:
  using Clock = std::chrono::steady_clock;

  IndexUpdater& updater_;
  Clock::time_point began_;
  bool wasMerging_ = false;
};

int run(const Corpus& corpus, const char* madeIndex, const char* beside) {
  const std::shared_ptr<const ContentTypes> types = contentTypesIn(Platform::current().resources());
  const Extractors extractors = builtInExtractors(*types);
  const ChangedFiles files(beside);
  double peer = 1e9;
  if (madeIndex == nullptr) {
    runMeasured({builtProgram("vistaro"), "index", "--once", corpus.tree, files.path()});
    corpus.updatedb();
    for (int round = 0; round < kRounds; ++round) {
      peer = std::min(peer, corpus.updatedbAgain().seconds);
    }
  }

  const IndexFolder folder =
      IndexFolder::open(madeIndex == nullptr ? corpus.indexFolder() : madeIndex).value();
  const IndexLock lock = folder.lock().value();
  IndexUpdater::Options options;
  options.leastChanged = 1U << 31;  // not before the merge is what is measured
  IndexUpdater updater(folder, lock, *types, madeIndex == nullptr ? &extractors : nullptr, options);
  const double first = secondsOf([&] {
    FileChanges changes = files.change(0, 1);
    if (madeIndex != nullptr) changes.trees.push_back(files.path());
    updater.apply(changes).value();
  });
  Quickest one(updater);
  Quickest many(updater);
  Quickest renamed(updater);
  for (int round = 0; round < kRounds; ++round) one.apply(files.change(round, 1));
  for (int round = 0; round < kRounds; ++round) {
    many.apply(files.change(round * kChangedFiles, kChangedFiles));
  }
  const double texts = secondsOf([&] {
    if (madeIndex != nullptr) return;  // of names alone
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

  const double before = ownMemory();
  updater.forget();
  ForkedRunner runner;
  options.leastChanged = 0;
  options.mostChangedPerMille = 0;
  options.runner = &runner;
  IndexUpdater merging(folder, lock, *types, madeIndex == nullptr ? &extractors : nullptr, options);
  merging.apply({}).value();
  Merges merges(merging);
  while (merges.count < (madeIndex == nullptr ? kMerges : kLongMerges))
    merges.apply(files.change(merges.updates % 20 * kChangedFiles, kChangedFiles));
  std::vector<bool> reached = {
      printFigure("OneChangedFile", 1000 * one.seconds, "ms", "limit", 100, 1),
      printFigure("ThousandChangedFiles", 1000 * many.seconds, "ms", "limit", 1000, 1),
      printFigure("RenamedFolderOf20000Files", 1000 * renamed.seconds, "ms", "limit", 1000, 1),
      printFigure("LongestUpdateWhileMerging", 1000 * merges.longest, "ms", "limit", 500, 1),
      printFigure("LongestUntilFound", 1000 * merges.longestPublishing, "ms", "limit", 500, 1),
  };
  if (madeIndex == nullptr) {
    reached.push_back(printFigure("TextsOfChangedFiles", texts / kRounds, "s", "limit", 10, 1));
    reached.push_back(printFigure("ThousandChangedFiles", 1000 * many.seconds, "ms", "updatedb",
                                  1000 * peer, 0.2));
  }
  fmt::print("a merge: {:.0f} ms; the longest update that took one up: {:.0f} ms\n",
             1000 * merges.seconds / merges.count, 1000 * merges.longestTakingUp);
  fmt::print("first update of a process: {:.0f} ms\n", 1000 * first);
  fmt::print(
      "{:.0f} MiB of its own, at most {:.0f} while merging; a process beside it at most {:.0f}\n",
      before, merges.mostMemory, mostMemoryOfChildren());
  fmt::print("{} merges, {} updates of {} files meanwhile\n", merges.count, merges.updates,
             kChangedFiles);
  return std::ranges::all_of(reached, std::identity()) ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) {
    fmt::print(stderr, "usage: index_update_bench FOLDER [INDEX BESIDE]\n");
    return 2;
  }
  const vt::Corpus corpus(argv[1]);
  const vt::PlatformScope scope(vt::linuxPlatform(vt::readEnvironment().value()));
  return vt::run(corpus, argc == 4 ? argv[2] : nullptr, argc == 4 ? argv[3] : nullptr);
}
