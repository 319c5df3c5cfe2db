#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "metadata/engine/ClassVerdicts.h"
#include "metadata/engine/FolderTable.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// Which rows of a segment a search looks at: those in the folders that it searches that the
/// account may read. Borrows what it is made of.
class SearchedRows {
 public:
  SearchedRows(const SegmentColumns& segment, const FolderTable& folders,
               const ClassVerdicts& verdicts)
      : segment_(segment), verdicts_(verdicts), areInside_(folders.searchedIn(segment)) {
    areInside_.push_back(0);  // what a damaged file gives for a folder
  }

  /// Two look-ups and no branch, since a processor cannot guess who may read what.
  bool contains(std::size_t row) const {
    const std::size_t folder = std::min<std::size_t>(segment_.folders[row], areInside_.size() - 1);
    return (areInside_[folder] & verdicts_.mayRead(segment_.classOf(row))) != 0;
  }

  /// Takes out of `rows` those that it does not contain.
  void narrow(std::vector<std::uint32_t>& rows) const {
    std::size_t kept = 0;
    for (const std::uint32_t row : rows) {
      rows[kept] = row;
      kept += contains(row) ? 1 : 0;
    }
    rows.resize(kept);
  }

 private:
  const SegmentColumns& segment_;
  const ClassVerdicts& verdicts_;
  std::vector<std::uint8_t> areInside_;  // by the folders that rows name, and one for none
};

}  // namespace vt
