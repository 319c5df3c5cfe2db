#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "metadata/store/SegmentBuilder.h"
#include "metadata/store/SegmentWriter.h"

namespace vt {

/// Brings what a builder has gathered into the order and the form of a segment.
class SegmentContents {
 public:
  /// Borrows `built`. Sorts the rows.
  explicit SegmentContents(const SegmentBuilder& built);

  Result<SegmentIdentity, StoreError> write(FileWriter& file, std::uint64_t generation,
                                            std::uint64_t mostTextBytes) const;

  /// The builder's numbers of the rows, in the order of the segment.
  const std::vector<std::uint32_t>& order() const { return order_; }

 private:
  void sortRows();
  void sortTies(std::size_t first, std::size_t last, const class PathOrder& order);

  /// Has the processor fetch what comes after the row at place `at`: rows and names were added in
  /// another order, so each is far from the one before it.
  void prefetchAfter(std::size_t at, bool withName) const;
  void writeRows(SegmentWriter& writer, std::uint64_t mostTextBytes) const;
  void writeOddAllocations(SegmentWriter& writer) const;
  void writeFolders(SegmentWriter& writer, std::uint64_t mostTextBytes) const;
  void writeFoldersByRow(SegmentWriter& writer) const;
  void writeClasses(SegmentWriter& writer, std::uint64_t mostTextBytes) const;
  void writeTypes(SegmentWriter& writer, std::uint64_t mostTextBytes) const;

  const SegmentBuilder& built_;
  std::vector<std::uint32_t> order_;  // of the rows: the builder's numbers
};

}  // namespace vt
