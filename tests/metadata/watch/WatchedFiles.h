#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "metadata/watch/FileSystemWatch.h"

namespace vt {

/// A watch with a clock that the test moves. What was done before a call is seen by it, since the
/// kernel queues events before the system call that causes them returns.
template <class Watch>
class WatchedFiles {
 public:
  explicit WatchedFiles(std::vector<std::string> roots, std::vector<std::string> ignored = {}) {
    const Result<bool, std::string> started =
        watch_.start({std::move(roots), std::move(ignored)}, now_);
    if (!started) failure_ = started.error();
  }

  /// Why nothing is watched; "" when it is.
  const std::string& failure() const { return failure_; }
  Watch& watch() { return watch_; }

  /// What was taken before was looked at by now.
  void collect() {
    watch_.endLook();
    watch_.collect(now_);
  }

  /// What has happened, as soon as there is a batch. Nothing that has happened gives no changes.
  FileChanges collectAndTake() {
    collect();
    now_ += std::chrono::milliseconds(500);
    std::optional<WatchBatch> batch = watch_.take(now_);
    return batch ? std::move(batch->changes) : FileChanges();
  }

  /// The next batch, files that are being written included, when nothing happens any more.
  std::optional<WatchBatch> nextAfterQuiet() {
    // Twice: what was told before a folder moved is told again once that is known.
    for (int i = 0; i < 2; ++i) {
      collect();
      now_ += std::chrono::seconds(2);
      if (std::optional<WatchBatch> batch = watch_.take(now_)) return batch;
    }
    return std::nullopt;
  }

  WatchInstant now() const { return now_; }
  void pass(std::chrono::milliseconds time) { now_ += time; }

 private:
  WatchInstant now_ = WatchInstant() + std::chrono::hours(1);
  Watch watch_;
  std::string failure_;
};

}  // namespace vt
