#pragma once

#include <cstdint>

namespace vt {

/// What tells a segment from all others.
struct SegmentIdentity {
  std::uint64_t bytes = 0;         ///< the size of the file
  std::uint64_t headChecksum = 0;  ///< changes with every byte of the columns

  bool operator==(const SegmentIdentity&) const = default;
};

}  // namespace vt
