#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "metadata/store/FileWriter.h"
#include "metadata/store/SegmentFormat.h"
#include "metadata/store/TextColumn.h"

namespace vt {

/// Lays columns out in a segment file, one after the other in the order of ColumnId.
class SegmentWriter {
 public:
  /// Begins the segment. `head` has the counts; places, sizes and checksums are filled in here.
  SegmentWriter(FileWriter& file, const SegmentHead& head);

  /// Writes columns of a segment that another writer has begun, to a part of its file; that one is
  /// then told by takeColumns().
  explicit SegmentWriter(FileWriter& part) : file_(part) {}

  /// Takes the columns from `first` to before `end` to lie where `part` has written them.
  void takeColumns(const SegmentWriter& part, ColumnId first, ColumnId end);

  /// Writes the column: `fill` appends its bytes to the file.
  template <class Fill>
  void column(ColumnId id, Fill fill) {
    begin(id);
    fill(file_);
    end(id);
  }
  /// Writes one number for each item of `items`.
  template <class Number, class Items, class NumberOf>
  void numbers(ColumnId id, const Items& items, NumberOf numberOf) {
    column(id, [&](FileWriter& file) {
      // Some at a time, since each append is looked at for whether it still fits.
      std::array<Number, 512> some;
      std::size_t count = 0;
      const auto append = [&] {
        file.append({reinterpret_cast<const char*>(some.data()), count * sizeof(Number)});
        count = 0;
      };
      for (const auto& item : items) {
        some[count++] = static_cast<Number>(numberOf(item));
        if (count == some.size()) append();
      }
      append();
    });
  }
  /// Writes one text for each item of `items`, each ended as TextColumn has it, and where they
  /// begin. The column may have `mostBytes`.
  template <class Items, class TextOf>
  void texts(ColumnId text, ColumnId offsets, const Items& items, std::uint64_t mostBytes,
             TextOf textOf) {
    pieces(text, offsets, items, mostBytes, std::string_view(&TextColumn::kEnd, 1), textOf);
  }
  /// The same for bytes of any kind, which end where the next ones begin.
  template <class Items, class BytesOf>
  void blobs(ColumnId bytes, ColumnId offsets, const Items& items, std::uint64_t mostBytes,
             BytesOf bytesOf) {
    pieces(bytes, offsets, items, mostBytes, {}, bytesOf);
  }

  /// Ends the segment with its head. All columns must have been written. Gives the head.
  const SegmentHead& finish();

 private:
  template <class Items, class PieceOf>
  void pieces(ColumnId id, ColumnId offsetsId, const Items& items, std::uint64_t mostBytes,
              std::string_view end, PieceOf pieceOf) {
    std::vector<std::uint32_t> offsets;
    offsets.reserve(items.size() + 1);
    std::uint64_t bytes = 0;
    column(id, [&](FileWriter& file) {
      for (const auto& item : items) {
        const std::string_view piece = pieceOf(item);
        offsets.push_back(static_cast<std::uint32_t>(bytes));
        file.append(piece);
        file.append(end);
        bytes += piece.size() + end.size();
      }
    });
    refuseMoreThan(mostBytes, bytes);
    offsets.push_back(static_cast<std::uint32_t>(bytes));
    numbers<std::uint32_t>(offsetsId, offsets, [](std::uint32_t offset) { return offset; });
  }
  void begin(ColumnId id);
  void end(ColumnId id);
  void refuseMoreThan(std::uint64_t mostBytes, std::uint64_t bytes);

  FileWriter& file_;
  SegmentHead head_;
};

}  // namespace vt
