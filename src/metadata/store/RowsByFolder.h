#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "metadata/store/SegmentColumns.h"

namespace vt {

/// Which rows of a segment are entries of which folder. Takes a pass over the rows to make, and 4
/// bytes for each; a segment holds no such table, since searches never ask.
class RowsByFolder {
 public:
  explicit RowsByFolder(const SegmentColumns& segment);

  /// The entries of the folder, newest first.
  std::span<const std::uint32_t> operator[](std::uint32_t folder) const {
    return std::span(rows_).subspan(starts_[folder], starts_[folder + 1] - starts_[folder]);
  }

 private:
  std::vector<std::uint32_t> starts_;  // by folder, and the end
  std::vector<std::uint32_t> rows_;
};

}  // namespace vt
