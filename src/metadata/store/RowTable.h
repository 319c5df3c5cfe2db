#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace vt {

/// Numbers in pieces of memory that never move: a growing vector would need room for both the old
/// and the new, three times the numbers at its worst.
template <class Number>
class PieceColumn {
 public:
  void add(Number number) {
    if (size_ % kPieceNumbers == 0) {
      pieces_.push_back(std::make_unique_for_overwrite<Number[]>(kPieceNumbers));
    }
    pieces_.back()[size_ % kPieceNumbers] = number;
    ++size_;
  }

  Number operator[](std::size_t row) const {
    return pieces_[row / kPieceNumbers][row % kPieceNumbers];
  }

  /// Gives the memory back; there are no numbers any more.
  void release() { *this = {}; }

 private:
  // So large that each piece is the system's own again when it is released.
  static constexpr std::size_t kPieceNumbers = (std::size_t{1} << 20) / sizeof(Number);

  std::vector<std::unique_ptr<Number[]>> pieces_;
  std::size_t size_ = 0;
};

/// What a segment will hold of its rows, column by column, since that is how it is written: of one
/// column at a time, the numbers of all rows lie near each other, and the memory of one that has
/// been written serves for the file.
struct RowTable {
  // Dates in microseconds since 1970.
  PieceColumn<std::int64_t> modified;
  PieceColumn<std::int64_t> created;  ///< kNoDate when there is none
  PieceColumn<std::int64_t> attributesChanged;
  PieceColumn<std::int64_t> accessed;
  PieceColumn<std::uint64_t> sizes;
  PieceColumn<std::uint32_t> allocatedBlocks;  ///< kNotInBlocks: the bytes stand below
  PieceColumn<std::uint16_t> types;
  PieceColumn<std::uint32_t> folders;
  PieceColumn<std::uint32_t> accessClasses;
  PieceColumn<std::uint32_t> nameStarts;  ///< in the arena
  PieceColumn<std::uint16_t> nameLengths;

  // Of few rows, by row, ascending: allocated bytes, and the folder that it is.
  std::vector<std::pair<std::uint32_t, std::uint64_t>> oddAllocations;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> ownFolders;

  std::uint32_t count = 0;
};

}  // namespace vt
