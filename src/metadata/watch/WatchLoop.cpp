#include "metadata/watch/WatchLoop.h"

#include <algorithm>
#include <utility>

#include "metadata/watch/ChangeCompaction.h"

namespace vt {

WatchLoop::WatchLoop(FileSystemWatch& watch, ChangeSink& sink, std::function<WatchInstant()> now,
                     std::function<bool()> isEnded, const WatchTimes& times)
    : watch_(watch),
      sink_(sink),
      now_(std::move(now)),
      isEnded_(std::move(isEnded)),
      times_(times),
      retry_(times.firstRetry),
      contentRetry_(times.firstRetry) {}

void WatchLoop::crawlSoon() {
  isCrawlWanted_ = true;
  retryAt_ = WatchInstant::min();
}

WatchInstant WatchLoop::step() {
  WatchInstant now = now_();
  watch_.collect(now);
  if (isCrawlDue(now)) {
    crawl(now);
  } else if (std::optional<WatchBatch> batch = watch_.take(now)) {
    // While a crawl is owed it sees to that, too.
    if (!isCrawlWanted_) apply(*batch);
    watch_.endLook();
  } else if (isRescanDue(now)) {
    rescan(now);
  } else if (areContentsLeft_ && !isCrawlWanted_ && now >= contentRetryAt_) {
    lookIntoFiles(now);
  }
  if (!isCrawlWanted_ && !watch_.due()) vouched_ = watch_.seenUntil();
  now = now_();
  return next(now);
}

bool WatchLoop::isCrawlDue(WatchInstant now) const {
  return (isCrawlWanted_ || now - lastCrawl_ >= times_.crawl) && now >= retryAt_;
}

bool WatchLoop::isRescanDue(WatchInstant now) const {
  if (isCrawlWanted_ || now - lastRescan_ < times_.rescan) return false;
  return blindSince_ || !watch_.unwatched().empty();
}

WatchInstant WatchLoop::next(WatchInstant now) const {
  WatchInstant next = isCrawlWanted_ ? std::max(retryAt_, now) : lastCrawl_ + times_.crawl;
  if (isCrawlWanted_) return next;
  if (const std::optional<WatchInstant> due = watch_.due()) next = std::min(next, *due);
  if (areContentsLeft_) next = std::min(next, std::max(contentRetryAt_, now));
  if (blindSince_ || !watch_.unwatched().empty()) {
    next = std::min(next, lastRescan_ + times_.rescan);
  }
  return next;
}

std::optional<WatchInstant> WatchLoop::vouchedUntil() const {
  std::optional<WatchInstant> until = vouched_;
  if (!until) return until;
  if (!watch_.unwatched().empty()) until = std::min(*until, lastRescan_);
  if (blindSince_) until = std::min(*until, *blindSince_);
  return until;
}

void WatchLoop::collectMeanwhile() { watch_.collect(now_()); }

void WatchLoop::crawl(WatchInstant now) {
  isCrawlWanted_ = true;
  watch_.watchUnwatched(now);
  watch_.beginLook();
  const Result<bool, StoreError> isDone = sink_.crawl([this] {
    collectMeanwhile();
    return !isEnded_();
  });
  watch_.endLook();
  if (!isDone) return fail(isDone.error());
  if (!*isDone) return;
  isCrawlWanted_ = false;
  areContentsLeft_ = true;
  lastCrawl_ = lastRescan_ = now;
  vouched_ = now;
  blindSince_.reset();
  failure_.reset();
  retry_ = times_.firstRetry;
  ++publications_;
}

void WatchLoop::rescan(WatchInstant now) {
  if (blindSince_) {
    // Only a look at everything finds the other names.
    crawl(now);
    return;
  }
  watch_.watchUnwatched(now);
  WatchBatch batch;
  batch.changes.trees = watch_.unwatched();
  batch.changes = compactedChanges(std::move(batch.changes));
  batch.seenUntil = *vouched_;
  watch_.beginLook();
  if (!batch.changes.empty()) apply(batch);
  watch_.endLook();
  if (!isCrawlWanted_) lastRescan_ = now;
}

void WatchLoop::apply(const WatchBatch& batch) {
  const WatchInstant began = now_();
  const Result<ChangeSink::Applied, StoreError> applied = sink_.apply(batch.changes, [this] {
    collectMeanwhile();
    return !isEnded_();
  });
  if (!applied) return fail(applied.error());
  if (*applied == ChangeSink::Applied::kEnded) {
    isCrawlWanted_ = true;  // should it go on after all
    return;
  }
  areContentsLeft_ = true;
  if (!blindSince_ && *applied == ChangeSink::Applied::kNotAllNames) blindSince_ = vouched_;
  vouched_ = std::max(*vouched_, batch.seenUntil);
  const FileChanges& changes = batch.changes;
  const WatchInstant ended = now_();
  lastBatch_ = {changes.entries.size(), changes.folders.size(), changes.trees.size(), ended,
                ended - began};
  ++publications_;
}

void WatchLoop::lookIntoFiles(WatchInstant now) {
  const Result<bool, StoreError> isDone = sink_.lookIntoFiles([&] {
    collectMeanwhile();
    const WatchInstant at = now_();
    const std::optional<WatchInstant> due = watch_.due();
    // A little each time, or a file that never stops changing would keep all others waiting.
    const bool mustWait = due && *due <= at && at - now >= times_.slice;
    return !isEnded_() && !mustWait && at - lastCrawl_ < times_.crawl;
  });
  if (isDone) {
    areContentsLeft_ = !*isDone;
    contentFailure_.reset();
    contentRetry_ = times_.firstRetry;
    return;
  }
  contentFailure_ = isDone.error();
  contentRetryAt_ = now_() + contentRetry_;
  contentRetry_ = std::min(contentRetry_ * 2, times_.longestRetry);
}

void WatchLoop::fail(const StoreError& error) {
  failure_ = error;
  // What was told is not told again, so everything is to be looked at.
  isCrawlWanted_ = true;
  retryAt_ = now_() + retry_;
  retry_ = std::min(retry_ * 2, times_.longestRetry);
}

}  // namespace vt
