#include "metadata/store/SegmentColumns.h"

#include <sys/stat.h>

#include <algorithm>

namespace vt {

const AclReading& ClassColumns::listOf(std::size_t number) const {
  const auto found = std::ranges::lower_bound(lists_->listed, number);
  if (found == lists_->listed.end() || *found != number) return lists_->unknown;
  return lists_->readings[static_cast<std::size_t>(found - lists_->listed.begin())];
}

std::uint32_t SegmentColumns::ownFolderOf(std::size_t row) const {
  // Most rows are told apart by their class, which says that they are no folders.
  if (!S_ISDIR(classes[classOf(row)].ownership.mode)) return kNoFolder;
  const auto rowOf = [this](std::uint32_t folder) {
    return folder < folderRows.size() ? folderRows[folder] : kNoRow;
  };
  const auto found = std::ranges::lower_bound(foldersByRow, row, {}, rowOf);
  if (found == foldersByRow.end() || rowOf(*found) != row) return kNoFolder;
  return folderNumbered(*found);
}

std::uint64_t SegmentColumns::oddAllocationOf(std::size_t row) const {
  const auto found = std::ranges::lower_bound(oddlyAllocatedRows, row);
  if (found == oddlyAllocatedRows.end() || *found != row) return 0;
  const auto at = static_cast<std::size_t>(found - oddlyAllocatedRows.begin());
  return at < oddAllocations.size() ? oddAllocations[at] : 0;
}

}  // namespace vt
