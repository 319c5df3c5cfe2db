#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "metadata/store/RowTable.h"

namespace vt {

/// Sorts rows by a date, newest first; equal ones by their numbers. In two halves, which two
/// threads may sort at the same time.
class NewestFirst {
 public:
  /// Borrows `dates`, which has `count` of them.
  NewestFirst(const PieceColumn<std::int64_t>& dates, std::uint32_t count);

  void sortFirstHalf() { sort(0, half_); }
  void sortSecondHalf() { sort(half_, count_); }

  /// The rows in order. Both halves must have been sorted.
  std::vector<std::uint32_t> rows() const;

 private:
  struct Key {
    std::int64_t date;
    std::uint32_t row;
  };

  static bool isBefore(const Key& a, const Key& b) {
    return a.date != b.date ? a.date > b.date : a.row < b.row;
  }
  void sort(std::uint32_t first, std::uint32_t last);

  const PieceColumn<std::int64_t>& dates_;
  std::uint32_t count_;
  std::uint32_t half_;
  std::unique_ptr<Key[]> keys_;
};

}  // namespace vt
