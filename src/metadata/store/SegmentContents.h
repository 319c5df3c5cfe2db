#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "metadata/store/RowNames.h"
#include "metadata/store/SegmentBuilder.h"
#include "metadata/store/SegmentWriter.h"

namespace vt {

/// Brings what a builder has gathered into the order and the form of a segment. With many rows, two
/// threads do so.
class SegmentContents {
 public:
  /// With fewer rows a thread costs more than it saves.
  static constexpr std::uint32_t kLeastRowsForTwoThreads = 50'000;

  /// Borrows `built`. Sorts the rows.
  explicit SegmentContents(const SegmentBuilder& built);

  /// To be called once. What may be released of the builder is then gone.
  Result<SegmentIdentity, StoreError> write(FileWriter& file, std::uint64_t generation,
                                            std::uint64_t mostTextBytes);

  /// The builder's numbers of the rows, in the order of the segment.
  std::vector<std::uint32_t> takeOrder() { return std::move(order_); }

 private:
  void sortTies();
  void sortTies(std::size_t first, std::size_t last, const class PathOrder& order);

  void writeNumbers(SegmentWriter& writer) const;
  template <class Number>
  void writeNumbers(SegmentWriter& writer, ColumnId id, PieceColumn<Number>& column) const;
  void writeOddAllocations(SegmentWriter& writer) const;
  void writeFolders(SegmentWriter& writer, std::uint64_t mostTextBytes) const;
  void writeClasses(SegmentWriter& writer, std::uint64_t mostTextBytes) const;
  void writeTypes(SegmentWriter& writer, std::uint64_t mostTextBytes) const;

  const SegmentBuilder& built_;
  bool isLarge_;
  RowNames names_;
  std::vector<std::uint32_t> order_;  // of the rows: the builder's numbers
};

}  // namespace vt
