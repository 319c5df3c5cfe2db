#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "metadata/store/Bitmap.h"
#include "metadata/store/NameArena.h"
#include "metadata/store/RowTable.h"
#include "metadata/store/SegmentWriter.h"

namespace vt {

/// The names of rows as a segment has them: folded, and as they are where that is another.
class RowNames {
 public:
  /// Borrows both.
  RowNames(const RowTable& rows, const NameArena& names);

  /// Folds the names of one half of the rows, to find out what they come to. Two threads may do one
  /// half each; both are to be done before anything else is asked.
  void measureFirstHalf() { firstBytes_ = measure(0, half_); }
  void measureSecondHalf() { secondBytes_ = measure(half_, rows_.count); }

  /// How many bytes of a segment the four columns take that begin at `offset`, up to where the next
  /// one can begin.
  std::uint64_t bytesFrom(std::uint64_t offset) const;
  /// Writes these columns for the rows in this order. Each of the texts may have `mostBytes`.
  void write(SegmentWriter& writer, const std::vector<std::uint32_t>& order,
             std::uint64_t mostBytes) const;

  std::string_view operator[](std::uint32_t row) const { return names_[placeOf(row)]; }

 private:
  /// Of texts with what ends each.
  struct Bytes {
    std::uint64_t folded = 0;
    std::uint64_t other = 0;
  };

  NameArena::Place placeOf(std::uint32_t row) const {
    return {rows_.nameStarts[row], rows_.nameLengths[row]};
  }
  Bytes measure(std::uint32_t first, std::uint32_t last);

  const RowTable& rows_;
  const NameArena& names_;
  std::uint32_t half_;
  Bitmap differs_;  // rows whose folded name is another
  Bytes firstBytes_;
  Bytes secondBytes_;
};

}  // namespace vt
