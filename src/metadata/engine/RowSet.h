#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "metadata/store/Bitmap.h"

namespace vt {

/// Rows of a segment, in order: all from one to before another, or some of these.
class RowSet {
 public:
  /// All rows of a segment of `size` rows from `first` to before `last`.
  RowSet(std::size_t size, std::size_t first, std::size_t last)
      : size_(size), first_(first), last_(last) {}
  static RowSet none(std::size_t size) { return {size, 0, 0}; }
  static RowSet all(std::size_t size) { return {size, 0, size}; }

  /// How many rows the segment has.
  std::size_t size() const { return size_; }
  /// No row is before this.
  std::size_t first() const { return first_; }
  /// No row is here or after.
  std::size_t last() const { return last_; }
  std::size_t count() const { return some_ ? some_->count() : last_ - first_; }
  bool isEmpty() const { return count() == 0; }
  bool contains(std::size_t row) const {
    return row >= first_ && row < last_ && (!some_ || some_->contains(row));
  }

  /// Takes out what is before `first`, and `last` and after.
  void keepRange(std::size_t first, std::size_t last);
  /// Takes out all that is not in `rows`, which holds rows of this set alone.
  void keepOnly(Bitmap rows) { some_ = std::move(rows); }
  void add(const RowSet& other);
  void remove(const RowSet& other);

  template <class Function>
  void forEach(Function visit) const {
    if (some_) {
      some_->forEach(visit);
    } else {
      for (std::size_t row = first_; row < last_; ++row) visit(row);
    }
  }

  /// Takes out the rows for which `isKept(row)` is false.
  template <class Function>
  void keepIf(const Function& isKept) {
    if (some_) {
      some_->keepIf(isKept);
      return;
    }
    Bitmap kept(size_);
    kept.addIf(first_, last_, isKept);
    some_ = std::move(kept);
  }

 private:
  /// The set as a bitmap.
  Bitmap asBitmap() const;

  std::size_t size_;
  std::size_t first_;
  std::size_t last_;
  std::optional<Bitmap> some_;  // of the rows from first_ to last_; nothing when it is all of them
};

}  // namespace vt
