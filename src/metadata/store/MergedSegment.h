#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Result.h"
#include "metadata/store/FileWriter.h"
#include "metadata/store/GenerationColumns.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/store/SegmentWriter.h"

namespace vt {

/// What base and delta of a generation hold together, as one base. Nothing is sorted or folded
/// again but what is equally old, so it costs little more than copying.
class MergedSegment {
 public:
  /// Borrows the generation, which must be sound and have a delta.
  explicit MergedSegment(const IndexGeneration& generation);

  Result<SegmentIdentity, StoreError> write(FileWriter& file, std::uint64_t generation) const;

  /// Which row each of the merged ones was: those of the delta are numbered on from the base's.
  const std::vector<std::uint32_t>& order() const { return order_; }

 private:
  /// A row and the columns that it is in.
  struct Row {
    const SegmentColumns& segment;
    std::size_t row;
  };

  Row at(std::uint32_t row) const {
    const std::size_t baseRows = columns_.base.rowCount();
    if (row < baseRows) return {columns_.base, row};
    return {columns_.delta, row - baseRows};
  }
  void mergeRows();
  void sortTies();
  void renumberClasses();
  void writeRows(SegmentWriter& writer) const;
  void writeOddAllocations(SegmentWriter& writer) const;
  void writeFolders(SegmentWriter& writer) const;
  void writeClasses(SegmentWriter& writer) const;
  template <class Number>
  void copy(SegmentWriter& writer, ColumnId id, std::span<const Number> column) const;

  const Segment& tables_;
  GenerationColumns columns_;
  std::vector<std::uint32_t> order_;
  std::vector<std::uint32_t> classNumbers_;  // by those of the generation; classes in use
  std::vector<std::uint32_t> usedClasses_;
};

}  // namespace vt
