#include "metadata/engine/RowSet.h"

#include <algorithm>

namespace vt {

Bitmap RowSet::asBitmap() const {
  if (some_) return *some_;
  Bitmap rows(size_);
  rows.addRange(first_, last_);
  return rows;
}

void RowSet::keepRange(std::size_t first, std::size_t last) {
  first_ = std::max(first_, first);
  last_ = std::max(first_, std::min(last_, last));
  if (some_) some_->keepRange(first_, last_);
}

void RowSet::add(const RowSet& other) {
  if (other.first_ == other.last_) return;
  if (first_ == last_) {
    *this = other;
    return;
  }
  Bitmap rows = asBitmap();
  rows |= other.asBitmap();
  first_ = std::min(first_, other.first_);
  last_ = std::max(last_, other.last_);
  some_ = std::move(rows);
}

void RowSet::remove(const RowSet& other) {
  if (first_ == last_ || other.first_ == other.last_) return;
  Bitmap rows = asBitmap();
  rows -= other.asBitmap();
  some_ = std::move(rows);
}

}  // namespace vt
