#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Date.h"
#include "foundation/Result.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/store/StoreError.h"

namespace vt {

/// A segment that an index consists of.
struct SegmentRecord {
  std::string file;  ///< its name in the folder of the index
  SegmentIdentity identity;

  bool operator==(const SegmentRecord&) const = default;
};

/// What an index consists of and tells of itself. Each generation has its own.
struct Manifest {
  std::uint64_t generation = 0;
  std::vector<SegmentRecord> segments;   ///< the base, then the delta if there is one
  std::vector<std::string> roots;        ///< canonical paths, bytes: what was asked to be indexed
  Date began;                            ///< when the crawl did, by the clock of this machine
  Date ended;                            ///< the same; a clock that was set may put it before
  std::chrono::microseconds duration{};  ///< of the crawl, by a clock that is never set
  /// Nothing that changed before is missing, as far as a watcher could tell. As `began` after a
  /// crawl.
  Date vouched;

  bool operator==(const Manifest&) const = default;
};

/// The manifest as its file has it: lines of text, the last one a checksum.
std::string printManifest(const Manifest& manifest);

/// Reads what printManifest() wrote, and nothing else: whatever else differs by a byte is damaged.
/// `shownPath` is for errors.
Result<Manifest, StoreError> parseManifest(std::string_view text, std::string_view shownPath);

}  // namespace vt
