#pragma once

#include <chrono>
#include <cstdint>

#include "metadata/store/Manifest.h"
#include "metadata/store/WatcherRecord.h"

namespace vt {

/// Whether a generation of an index can still answer for its folders.
enum class IndexFreshness : std::uint8_t {
  kFresh,
  kOld,
  kOfTheFuture,  ///< from before the clock was set back; nobody knows how old it is
};

/// Three crawls of an indexer that runs every five minutes: one may fail, one may take long.
inline constexpr std::chrono::minutes kIndexIsFreshFor{15};

/// By how much the clocks of file servers may differ from one reading to the next.
inline constexpr std::chrono::minutes kClockTolerance{1};

/// Since when changes may be missing from a generation: since its crawl began, or the last moment
/// that a watcher vouched for.
inline Date knownUntil(const Manifest& manifest) {
  return manifest.vouched > manifest.began ? manifest.vouched : manifest.began;
}

inline IndexFreshness freshnessOf(const Manifest& manifest, Date now) {
  const Date known = knownUntil(manifest);
  if (known > now + kClockTolerance) return IndexFreshness::kOfTheFuture;
  return known < now - kIndexIsFreshFor ? IndexFreshness::kOld : IndexFreshness::kFresh;
}

/// Whether a watcher vouches for a generation: that it had, not longer ago than a crawl may have
/// begun, all that had happened by then. Counted by a clock that nobody sets, so that neither one
/// that was set back nor a file of the future makes an old index fresh.
inline bool isVouchedFor(const Manifest& manifest, const WatcherRecord& record,
                         const BootInstant& now) {
  return record.generation <= manifest.generation && !now.boot.empty() &&
         record.seenUntil.boot == now.boot && record.seenUntil.since <= now.since &&
         now.since - record.seenUntil.since <= kIndexIsFreshFor;
}

}  // namespace vt
