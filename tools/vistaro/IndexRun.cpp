#include "vistaro/IndexRun.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

#include "metadata/extract/Extractors.h"
#include "metadata/indexing/Indexer.h"
#include "platform/Platform.h"
#include "platform/linux/ContentTypeTable.h"
#include "platform/linux/extraction/LinuxExtractors.h"
#include "scopes/FolderPaths.h"
#include "vistaro/CanonicalFolder.h"
#include "vistaro/CommandError.h"
#include "vistaro/IndexingLine.h"
#include "vistaro/ProgressLine.h"
#include "vistaro/SettingsChange.h"
#include "vistaro/SignalQueue.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

using Clock = std::chrono::steady_clock;
using Wish = SignalQueue::Wish;

template <class T>
T orThrow(Result<T, StoreError> result) {
  if (!result) throw CommandError{kFailure, printable(result.error().reason)};
  return std::move(result).value();
}

/// The folders of the settings as they are now. One that is not there is named and left out: a
/// volume may come back.
std::vector<std::string> foldersOfSettings() {
  const std::shared_ptr<VTSettings> settings = readableSettings();
  settings->reloadConfig();
  std::vector<std::string> folders;
  for (const std::string& path : pathsCoveredBy(*settings->searchFolders())) {
    try {
      folders.push_back(canonicalFolder(path));
    } catch (const CommandError& error) {
      printError("note: " + error.text);
    }
  }
  return folders;
}

/// Runs an indexer and tells of it.
class IndexRun {
 public:
  IndexRun(const IndexOptions& options, const std::string& indexFolder)
      : options_(options),
        folder_(orThrow(IndexFolder::make(indexFolder))),
        lock_(orThrow(folder_.lock())),
        types_(contentTypesIn(Platform::current().resources())) {
    if (!types_) {
      throw CommandError{kFailure,
                         "the table of types cannot be read; `vistaro doctor` tells more"};
    }
    if (!options.namesOnly) {
      extractors_.emplace(
          linuxExtractors(*types_, extractionWorkers(Platform::current().resources(), *types_)));
    }
    for (const std::string& folder : options.folders) {
      folders_.push_back(canonicalFolder(folder));
    }
  }

  /// Crawls, publishes, and looks into files, but not beyond `deadline`: names must not grow old.
  /// False when a signal ended it. Throws CommandError when it failed.
  bool once(Clock::time_point deadline = Clock::time_point::max()) {
    const std::vector<std::string> roots = folders_.empty() ? foldersOfSettings() : folders_;
    if (roots.empty()) {
      throw CommandError{kUsage,
                         "there is nothing to index: name a folder, or let one be searched with "
                         "`vistaro folders add`"};
    }
    const Indexer indexer(folder_, lock_, *types_, extractors_ ? &*extractors_ : nullptr);
    ProgressLine line(Clock::now());
    const bool shows = Terminal::obeysEscapes(STDERR_FILENO);
    auto ended = indexer.run(roots, [&](const IndexingProgress& progress) {
      if (shows) {
        showOnTerminal(line.update(Clock::now(), [&] { return indexingLine(progress); }));
      }
      return !isEnded() && (!progress.contents || Clock::now() < deadline);
    });
    showOnTerminal(line.remove());
    const std::optional<IndexingReport> report = orThrow(std::move(ended));
    if (report) tell(*report);
    return report.has_value() && !isEnded_;
  }

  /// Crawls again and again until a signal ends it. Throws when the very first one fails.
  void forever() {
    const std::chrono::minutes interval(options_.minutes);
    Clock::time_point next = Clock::now() + interval;
    bool goesOn = once(next);
    while (goesOn && !isEnded(next - Clock::now())) {
      next = Clock::now() + interval;
      isWantedAgain_ = false;
      try {
        goesOn = once(next);
      } catch (const CommandError& error) {
        // Space may be made, a folder come back: what was published last goes on serving.
        printError(error.text);
      }
    }
  }

 private:
  /// Takes what signals there are, waiting for one no longer than `patience`.
  bool isEnded(Clock::duration patience = {}) {
    const bool waits = !isEnded_ && !isWantedAgain_;
    switch (signals_.next(
        std::chrono::ceil<std::chrono::milliseconds>(waits ? patience : Clock::duration::zero()))) {
      case Wish::kEnd:
        isEnded_ = true;
        break;
      case Wish::kAgain:
        isWantedAgain_ = true;
        break;
      case Wish::kNone:
        break;
    }
    return isEnded_;
  }

  void tell(const IndexingReport& report) const {
    if (report.distrusted) {
      printError(fmt::format("note: {}; all was read anew", printable(report.distrusted->reason)));
    }
    const std::chrono::duration<double> crawling = report.manifest.duration;
    fmt::print("generation {}: {} files in {} folders, crawled in {:.2f} s, written in {:.2f} s\n",
               report.manifest.generation, report.crawled.entries, report.crawled.folders,
               crawling.count(), report.publishing.count());
    if (report.crawled.leftOut > 0) {
      fmt::print("  {} of the folders could not be read, or not to the end\n",
                 report.crawled.leftOut);
    }
    tellOfContents(report);
    std::fflush(stdout);  // a log that this may go to is to be read while it runs on
  }

  static void tellOfContents(const IndexingReport& report) {
    if (report.distrustedCatalogue) {
      printError(fmt::format("note: {}; all files are looked into anew",
                             printable(report.distrustedCatalogue->reason)));
    }
    if (report.contentError) {
      printError(fmt::format("note: files were not looked into, or not all: {}",
                             printable(report.contentError->reason)));
      return;
    }
    if (!report.contents || report.contents->expected == 0) return;
    const ContentCounts& contents = *report.contents;
    fmt::print("  {} files looked into in {:.2f} s", contents.done,
               report.lookingIntoFiles.count());
    if (contents.failures > 0) fmt::print(", {} of them in vain", contents.failures);
    if (contents.done < contents.expected) {
      fmt::print("; {} are left for the next time", contents.expected - contents.done);
    }
    fmt::print("\n");
  }

  const IndexOptions& options_;
  IndexFolder folder_;
  IndexLock lock_;
  std::shared_ptr<const ContentTypes> types_;
  std::optional<Extractors> extractors_;
  std::vector<std::string> folders_;
  SignalQueue signals_;
  bool isEnded_ = false;
  bool isWantedAgain_ = false;  // without waiting, once this crawl is done
};

}  // namespace

int runIndexer(const IndexOptions& options, const std::string& indexFolder) {
  IndexRun run(options, indexFolder);
  if (!options.once) {
    run.forever();
  } else if (!run.once()) {
    throw CommandError{kFailure, "ended by a signal"};
  }
  return kFound;
}

}  // namespace vt::tool
