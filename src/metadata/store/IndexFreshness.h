#pragma once

#include <chrono>
#include <cstdint>

#include "metadata/store/Manifest.h"

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

/// How fresh a generation is counts from when its crawl began: what changed since may be missing.
inline IndexFreshness freshnessOf(const Manifest& manifest, Date now) {
  if (manifest.began > now + kClockTolerance) return IndexFreshness::kOfTheFuture;
  return manifest.began < now - kIndexIsFreshFor ? IndexFreshness::kOld : IndexFreshness::kFresh;
}

}  // namespace vt
