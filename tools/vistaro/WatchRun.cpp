#include "vistaro/WatchRun.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "metadata/crawl/IndexRoots.h"
#include "metadata/store/WatcherRecord.h"
#include "metadata/watch/RootRights.h"
#include "metadata/watch/WatchChoice.h"
#include "metadata/watch/WatchLoop.h"
#include "settings/VTSettings.h"
#include "vistaro/CommandError.h"
#include "vistaro/IndexSink.h"
#include "vistaro/IndexWriter.h"
#include "vistaro/SettingsStamp.h"
#include "vistaro/SignalQueue.h"
#include "vistaro/Terminal.h"
#include "vistaro/WatchReport.h"

namespace vt::tool {
namespace {

using Wish = SignalQueue::Wish;

// How often is looked for what no watch tells: settings, mounts, and folders that come and go.
constexpr std::chrono::seconds kTick{1};
// Events that come one by one are read some at a time.
constexpr std::chrono::milliseconds kBreath{10};
// Far below what an index may be old, and enough for who looks at the state.
constexpr std::chrono::seconds kBetweenRecords{30};
constexpr std::chrono::seconds kBetweenRecordsOfChanges{2};

WatchInstant now() { return WatchClock::now(); }

/// Watches the files of an index until a signal ends it.
class WatchRun {
 public:
  WatchRun(const IndexOptions& options, const std::string& indexFolder)
      : writer_(options, indexFolder), sink_(writer_) {
    times_.rescan = std::chrono::minutes(options.minutes);
    times_.crawl = std::chrono::hours(options.crawlHours);
  }

  void run();

 private:
  bool isEnded();
  bool haveRootsChanged();
  std::vector<std::string> wishedFolders();
  void startAnew();
  void tick();
  void tellTrouble();
  void keepRecord();
  WatcherRecord record() const;
  void waitUntil(WatchInstant time);

  SignalQueue signals_;  // before any thread is started
  IndexWriter writer_;
  IndexSink sink_;
  WatchTimes times_;
  bool isEnded_ = false;

  SettingsStamp settings_;
  std::vector<std::string> wished_;
  std::vector<std::string> missing_;  // why each of these is missing
  std::vector<std::string> roots_;
  std::string rights_;

  WatchChoice choice_;
  std::optional<WatchLoop> loop_;  // nothing while there is nothing to watch
  WatchInstant lastTick_;
  WatchInstant lastRecord_;
  std::uint64_t toldPublications_ = 0;
  std::string trouble_;       // that was told last
  std::string startFailure_;  // why nothing can be watched; "" when it can
};

bool WatchRun::isEnded() {
  while (true) {
    switch (signals_.next(std::chrono::milliseconds(0))) {
      case Wish::kEnd:
        isEnded_ = true;
        break;
      case Wish::kAgain:
        if (loop_) loop_->crawlSoon();
        break;
      case Wish::kNone:
        return isEnded_;
    }
  }
}

std::vector<std::string> WatchRun::wishedFolders() {
  try {
    return writer_.wishedFolders();
  } catch (const CommandError& error) {
    // A file that is being mended: what was in it goes on to count.
    if (wished_.empty()) throw;
    printError("note: " + error.text);
    return wished_;
  }
}

bool WatchRun::haveRootsChanged() {
  if (settings_.hasChanged()) wished_ = wishedFolders();
  std::vector<std::string> missing;
  std::vector<std::string> roots = outermostRoots(IndexWriter::presentFolders(
      wished_, [&](const std::string& why) { missing.push_back(why); }));
  for (const std::string& why : missing) {
    if (std::ranges::find(missing_, why) == missing_.end()) printError("note: " + why);
  }
  missing_ = std::move(missing);
  std::string rights = rootRights(roots);
  if (roots == roots_ && rights == rights_) return false;
  roots_ = std::move(roots);
  rights_ = std::move(rights);
  return true;
}

void WatchRun::startAnew() {
  loop_.reset();
  choice_ = {};
  if (roots_.empty()) {
    printError(kNothingToIndex);
    return;
  }
  sink_.setRoots(roots_);
  std::error_code error;
  const std::string index = std::filesystem::canonical(writer_.folder().path(), error);
  Result<WatchChoice, std::string> choice = startWatch({roots_, {index}}, now());
  if (!choice) {
    if (startFailure_ != choice.error()) printError(printable(choice.error()));
    startFailure_ = choice.error();
    rights_.clear();  // so that it is tried again
    return;
  }
  startFailure_.clear();
  choice_ = std::move(choice).value();
  loop_.emplace(*choice_.watch, sink_, now, [this] { return isEnded(); }, times_);
  const WatchCounts counts = choice_.watch->counts();
  fmt::print("watching {} by {}{}\n", countOf(counts.watched, choice_.watch->unit()),
             choice_.watch->name(), choice_.why.empty() ? "" : ", since " + printable(choice_.why));
  std::fflush(stdout);
}

void WatchRun::tick() {
  if (now() - lastTick_ < kTick) return;
  if (haveRootsChanged()) startAnew();
  lastTick_ = now();
}

void WatchRun::tellTrouble() {
  std::string trouble;
  const auto add = [&](const std::string& text) {
    trouble += (trouble.empty() ? "" : "; ") + text;
  };
  if (loop_ && loop_->failure()) add(loop_->failure()->reason);
  if (loop_ && loop_->contentFailure()) {
    add("files were not looked into, or not all: " + loop_->contentFailure()->reason);
  }
  if (sink_.mergeError()) add("base and delta were not merged: " + sink_.mergeError()->reason);
  if (loop_ && !choice_.watch->whyUnwatched().empty()) {
    add(fmt::format("not all is watched, but looked at every {} minutes: {}", times_.rescan.count(),
                    choice_.watch->whyUnwatched()));
  }
  if (trouble == trouble_) return;
  printError("note: " + (trouble.empty() ? "all is well again" : printable(trouble)));
  trouble_ = std::move(trouble);
  lastRecord_ = {};  // so that it is told at once
}

WatcherRecord WatchRun::record() const {
  WatcherRecord record;
  const Result<Manifest, StoreError> manifest = writer_.folder().manifest();
  if (manifest) record.generation = manifest->generation;
  record.process = ::getpid();
  if (!loop_) return record;
  const std::optional<WatchInstant> vouched = loop_->vouchedUntil();
  if (manifest && vouched) {
    record.seenUntil = BootInstant::now();
    record.seenUntil.since -=
        std::chrono::duration_cast<std::chrono::microseconds>(now() - *vouched);
  }
  const WatchCounts counts = choice_.watch->counts();
  record.watch = choice_.watch->name();
  record.why = choice_.why;
  record.unit = choice_.watch->unit();
  record.watched = counts.watched;
  record.unwatched = counts.unwatched;
  record.whyUnwatched = choice_.watch->whyUnwatched();
  record.waiting = counts.waiting;
  record.overflows = counts.overflows;
  if (const std::optional<AppliedBatch>& batch = loop_->lastBatch()) {
    record.lastBatch =
        std::chrono::floor<Date::duration>(std::chrono::system_clock::now() - (now() - batch->at));
    record.lastBatchSize = batch->entries + batch->folders + batch->trees;
    record.lastBatchSeconds = batch->taken.count();
  }
  if (loop_->failure()) record.failure = loop_->failure()->reason;
  if (loop_->contentFailure()) record.contentFailure = loop_->contentFailure()->reason;
  record.isMerging = sink_.isMerging() ? 1 : 0;
  if (sink_.mergeError()) record.mergeFailure = sink_.mergeError()->reason;
  return record;
}

void WatchRun::keepRecord() {
  const std::uint64_t publications = loop_ ? loop_->publications() : 0;
  const bool isChanged = publications != toldPublications_;
  if (now() - lastRecord_ < (isChanged ? kBetweenRecordsOfChanges : kBetweenRecords)) return;
  lastRecord_ = now();
  toldPublications_ = publications;
  // When it can't be written the index grows old, which is what is to be told.
  static_cast<void>(writeWatcherRecord(writer_.folder().path(), record()));
}

void WatchRun::waitUntil(WatchInstant time) {
  const auto wait = [](std::span<pollfd> files, WatchInstant until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - now());
    const auto count = std::max<std::int64_t>(left.count(), 0);
    ::poll(files.data(), files.size(), static_cast<int>(std::min<std::int64_t>(count, 60'000)));
  };
  std::array<pollfd, 2> files{pollfd{signals_.descriptor(), POLLIN, 0},
                              pollfd{loop_ ? choice_.watch->descriptor() : -1, POLLIN, 0}};
  wait(std::span(files).first(1), std::min(time, now() + kBreath));
  if (files[0].revents == 0) wait(files, time);
}

void WatchRun::run() {
  wished_ = writer_.wishedFolders();
  static_cast<void>(settings_.hasChanged());
  haveRootsChanged();
  if (roots_.empty()) throw CommandError{kUsage, kNothingToIndex};
  startAnew();
  if (!startFailure_.empty()) throw CommandError{kFailure, "nothing can be watched"};
  bool isFirst = true;
  while (!isEnded()) {
    tick();
    WatchInstant next = lastTick_ + kTick;
    if (loop_) next = std::min(next, loop_->step());
    if (isFirst && loop_ && loop_->failure()) {
      throw CommandError{kFailure, printable(loop_->failure()->reason)};
    }
    isFirst = false;
    sink_.tendMerge();
    tellTrouble();
    keepRecord();
    waitUntil(next);
  }
}

}  // namespace

int runWatcher(const IndexOptions& options, const std::string& indexFolder) {
  WatchRun(options, indexFolder).run();
  return kFound;
}

}  // namespace vt::tool
