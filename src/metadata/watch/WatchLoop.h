#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "metadata/watch/ChangeSink.h"
#include "metadata/watch/FileSystemWatch.h"

namespace vt {

/// How often the loop does what it does without being told.
struct WatchTimes {
  std::chrono::minutes rescan{5};              ///< looks at what is not watched
  std::chrono::minutes crawl{24 * 60};         ///< looks at everything
  std::chrono::milliseconds slice{250};        ///< looks into files at least, however much changes
  std::chrono::milliseconds firstRetry{1000};  ///< after a failure; each further one doubles it
  std::chrono::milliseconds longestRetry{60'000};
};

/// What a set of changes came to.
struct AppliedBatch {
  std::size_t entries = 0;
  std::size_t folders = 0;
  std::size_t trees = 0;
  WatchInstant at;                        ///< when it was published
  std::chrono::duration<double> taken{};  ///< from its being ready until then
};

/// Keeps an index up to date: hands what a watch tells to a sink, names before contents, looks at
/// everything from time to time, and after a failure tries again.
class WatchLoop {
 public:
  /// Borrows `watch`, which has been started, and `sink`. `now` is asked for the time, and
  /// `isEnded` in the middle of long work.
  WatchLoop(FileSystemWatch& watch, ChangeSink& sink, std::function<WatchInstant()> now,
            std::function<bool()> isEnded, const WatchTimes& times = {});

  /// Does what is due, first of all a crawl. Gives when to call again at the latest: sooner when
  /// the watch's descriptor gets ready.
  WatchInstant step();

  /// Everything is to be looked at, now and whatever failed last.
  void crawlSoon();

  /// Up to when all that happened is in the index; nothing before the first crawl.
  std::optional<WatchInstant> vouchedUntil() const;
  /// What was published last since the loop began, crawls apart.
  const std::optional<AppliedBatch>& lastBatch() const { return lastBatch_; }
  /// Why the index can't be brought up to date; nothing when it can.
  const std::optional<StoreError>& failure() const { return failure_; }
  /// Why files can't be looked into; nothing when they can.
  const std::optional<StoreError>& contentFailure() const { return contentFailure_; }
  /// How often something was published.
  std::uint64_t publications() const { return publications_; }

 private:
  bool isCrawlDue(WatchInstant now) const;
  bool isRescanDue(WatchInstant now) const;
  void crawl(WatchInstant now);
  void rescan(WatchInstant now);
  void apply(const WatchBatch& batch);
  void lookIntoFiles(WatchInstant now);
  void collectMeanwhile();
  void fail(const StoreError& error);
  WatchInstant next(WatchInstant now) const;

  FileSystemWatch& watch_;
  ChangeSink& sink_;
  std::function<WatchInstant()> now_;
  std::function<bool()> isEnded_;
  WatchTimes times_;

  bool isCrawlWanted_ = true;
  bool areContentsLeft_ = false;
  WatchInstant lastCrawl_;   // began
  WatchInstant lastRescan_;  // began
  WatchInstant retryAt_;
  WatchInstant contentRetryAt_;
  std::chrono::milliseconds retry_;
  std::chrono::milliseconds contentRetry_;
  std::optional<WatchInstant> vouched_;
  // Since when a file with several names may have changed under those that nobody knows.
  std::optional<WatchInstant> blindSince_;
  std::optional<AppliedBatch> lastBatch_;
  std::optional<StoreError> failure_;
  std::optional<StoreError> contentFailure_;
  std::uint64_t publications_ = 0;
};

}  // namespace vt
