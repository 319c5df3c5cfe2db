#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "metadata/store/NameArena.h"

namespace vt {

/// What a segment will hold of an entry; dates in microseconds since 1970. As large as a line of
/// the processor's cache, since rows are read one by one and far from each other.
struct alignas(64) BuiltRow {
  std::int64_t modified;
  std::int64_t created;  ///< kNoDate when there is none
  std::int64_t attributesChanged;
  std::int64_t accessed;
  std::uint64_t sizeInBytes;
  std::uint32_t allocatedBlocks;  ///< kNotInBlocks: the builder has the bytes elsewhere
  std::uint32_t nameStart;
  std::uint16_t nameLength;
  std::uint16_t type;
  std::uint32_t folder;
  std::uint32_t accessClass;
  std::uint32_t ownFolder;

  NameArena::Place name() const { return {nameStart, nameLength}; }
};
static_assert(sizeof(BuiltRow) == 64);
static_assert(NameArena::kLongestName <= 0xFFFF);

/// Rows in pieces of memory that never move: a growing vector would need room for both the old and
/// the new, three times the rows at its worst.
class RowTable {
 public:
  std::size_t size() const { return size_; }

  void add(const BuiltRow& row) {
    if (size_ % kPieceRows == 0) {
      pieces_.push_back(std::make_unique_for_overwrite<BuiltRow[]>(kPieceRows));
    }
    pieces_.back()[size_ % kPieceRows] = row;
    ++size_;
  }

  const BuiltRow& operator[](std::size_t row) const {
    return pieces_[row / kPieceRows][row % kPieceRows];
  }

 private:
  static constexpr std::size_t kPieceRows = std::size_t{1} << 14;

  std::vector<std::unique_ptr<BuiltRow[]>> pieces_;
  std::size_t size_ = 0;
};

}  // namespace vt
