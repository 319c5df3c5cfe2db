#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Date.h"
#include "foundation/Result.h"
#include "metadata/store/StoreError.h"

namespace vt {

/// An instant by a clock that nobody sets: since the machine was started, sleep included.
struct BootInstant {
  std::string boot;  ///< which start of the machine that was
  std::chrono::microseconds since{};

  /// Now; `boot` is "" where the system does not tell, and then nothing is vouched for.
  static BootInstant now();

  bool operator==(const BootInstant&) const = default;
};

/// What whoever watches the files of an index tells of itself and of the index, in the file
/// "watcher" beside the manifest.
struct WatcherRecord {
  /// This generation and later ones have all that happened before `seenUntil`.
  std::uint64_t generation = 0;
  BootInstant seenUntil;

  std::int64_t process = 0;
  std::string watch;                ///< "fanotify" or "inotify"
  std::string why;                  ///< why not a better one; "" for the best
  std::string unit;                 ///< what is counted: "folders" or "file systems"
  std::uint64_t watched = 0;        ///< of them
  std::uint64_t unwatched = 0;      ///< of them; looked at from time to time
  std::string whyUnwatched;         ///< "" when all are watched
  std::uint64_t waiting = 0;        ///< names whose change waits to be taken up
  std::uint64_t overflows = 0;      ///< how often everything had to be looked at
  std::optional<Date> lastBatch;    ///< when changes were last published
  std::uint64_t lastBatchSize = 0;  ///< places that were looked at
  double lastBatchSeconds = 0;
  std::string failure;          ///< why the index can't be brought up to date; "" when it can
  std::string contentFailure;   ///< why files can't be looked into; "" when they can
  std::uint64_t isMerging = 0;  ///< 1 while base and delta are merged
  std::string mergeFailure;  ///< why they could not be when that was tried last; "" when they could

  bool operator==(const WatcherRecord&) const = default;
};

/// A property list; bytes that it can't hold, as names of files may have, are shown as others.
std::string printWatcherRecord(const WatcherRecord& record);
/// Reads what printWatcherRecord() wrote; kDamaged for anything else.
Result<WatcherRecord, StoreError> parseWatcherRecord(std::string_view text,
                                                     std::string_view shownPath);

/// What the watcher of the index in `folder` last told. kMissing when there was none.
Result<WatcherRecord, StoreError> readWatcherRecord(const std::string& folder);
/// Replaces it, as the holder of the index's lock. It is not forced to the disk: what it vouches
/// for ends with this start of the machine. The one before stays beside it, as "watcher.tmp": its
/// room is that of the next one, so that a watcher can say that the disk is full.
std::optional<StoreError> writeWatcherRecord(const std::string& folder,
                                             const WatcherRecord& record);

}  // namespace vt
