#include "metadata/store/RowsByFolder.h"

#include <cstddef>
#include <numeric>

namespace vt {

RowsByFolder::RowsByFolder(const SegmentColumns& segment)
    : starts_(std::size_t{segment.folderCount()} + 1, 0), rows_(segment.rowCount()) {
  // A counting sort: how many, then where, then each to its place.
  for (std::size_t row = 0; row < rows_.size(); ++row) ++starts_[segment.folderOf(row) + 1];
  std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  std::vector<std::uint32_t> next = starts_;
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    rows_[next[segment.folderOf(row)]++] = static_cast<std::uint32_t>(row);
  }
}

}  // namespace vt
