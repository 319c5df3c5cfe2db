#include "metadata/store/NewestFirst.h"

#include <algorithm>

namespace vt {

NewestFirst::NewestFirst(const PieceColumn<std::int64_t>& dates, std::uint32_t count)
    : dates_(dates),
      count_(count),
      half_(count / 2),
      keys_(std::make_unique_for_overwrite<Key[]>(count)) {}

void NewestFirst::sort(std::uint32_t first, std::uint32_t last) {
  for (std::uint32_t row = first; row < last; ++row) keys_[row] = {dates_[row], row};
  std::sort(keys_.get() + first, keys_.get() + last, isBefore);
}

std::vector<std::uint32_t> NewestFirst::rows() const {
  std::vector<std::uint32_t> rows;
  rows.reserve(count_);
  std::uint32_t first = 0;
  std::uint32_t second = half_;
  while (first < half_ && second < count_) {
    rows.push_back(keys_[isBefore(keys_[second], keys_[first]) ? second++ : first++].row);
  }
  while (first < half_) rows.push_back(keys_[first++].row);
  while (second < count_) rows.push_back(keys_[second++].row);
  return rows;
}

}  // namespace vt
