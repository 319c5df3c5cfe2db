#include "vistaro/IndexRun.h"

#include <chrono>
#include <optional>
#include <utility>

#include "vistaro/CommandError.h"
#include "vistaro/IndexWriter.h"
#include "vistaro/SignalQueue.h"
#include "vistaro/Terminal.h"
#include "vistaro/WatchRun.h"

namespace vt::tool {
namespace {

using Clock = std::chrono::steady_clock;
using Wish = SignalQueue::Wish;

/// Runs an indexer and tells of it.
class IndexRun {
 public:
  IndexRun(const IndexOptions& options, const std::string& indexFolder)
      : options_(options), writer_(options, indexFolder) {}

  /// Crawls, publishes, and looks into files, but not beyond `deadline`: names must not grow old.
  /// False when a signal ended it. Throws CommandError when it failed.
  bool once(Clock::time_point deadline = Clock::time_point::max()) {
    // A folder that is not there is named and left out: a volume may come back.
    const std::vector<std::string> roots = IndexWriter::presentFolders(
        writer_.wishedFolders(), [](const std::string& why) { printError("note: " + why); });
    if (roots.empty()) throw CommandError{kUsage, kNothingToIndex};
    const auto report = writer_.run(roots, [&](const IndexingProgress& progress) {
      return !isEnded() && (!progress.contents || Clock::now() < deadline);
    });
    if (!report) throw CommandError{kFailure, printable(report.error().reason)};
    if (*report) {
      IndexWriter::tell(**report);
      if (!IndexWriter::tellOfTrouble(**report) && (*report)->contents) {
        IndexWriter::tellOfContents(*(*report)->contents, (*report)->lookingIntoFiles);
      }
    }
    return report->has_value() && !isEnded_;
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

  const IndexOptions& options_;
  IndexWriter writer_;
  SignalQueue signals_;
  bool isEnded_ = false;
  bool isWantedAgain_ = false;  // without waiting, once this crawl is done
};

}  // namespace

int runIndexer(const IndexOptions& options, const std::string& indexFolder) {
  if (options.watch) return runWatcher(options, indexFolder);
  IndexRun run(options, indexFolder);
  if (!options.once) {
    run.forever();
  } else if (!run.once()) {
    throw CommandError{kFailure, "ended by a signal"};
  }
  return kFound;
}

}  // namespace vt::tool
