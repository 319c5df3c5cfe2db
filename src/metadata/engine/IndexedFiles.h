#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "metadata/engine/ClassVerdicts.h"
#include "metadata/engine/FolderTable.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/LiveAttribute.h"
#include "metadata/live/LiveFile.h"
#include "metadata/store/GenerationColumns.h"

namespace vt {

/// Tells attributes of the rows of an index as a live search tells those of files. Rows of the
/// delta come after those of the base. Borrows all.
class IndexedFiles {
 public:
  IndexedFiles(const GenerationColumns& columns, const std::vector<ContentTypeId>& types,
               const TypeTables& tables, const FolderTable& folders, const ClassVerdicts& verdicts)
      : columns_(columns), types_(types), tables_(tables), folders_(folders), verdicts_(verdicts) {}

  /// Puts the attribute's value into `value`; false when the row has none. The row must be in a
  /// folder that is searched for kPath to be told. The number of a folder's entries is told to who
  /// may list it.
  bool tell(LiveAttribute attribute, std::size_t row, Value& value) const;

  std::string_view name(std::size_t row) const {
    const Row at = find(row);
    return at.segment.name(at.row);
  }
  ContentTypeId type(std::size_t row) const { return typeOf(find(row)); }
  /// The number by which the folder tables know the folder that the row is in.
  std::uint32_t folder(std::size_t row) const {
    const Row at = find(row);
    return at.segment.folderOf(at.row);
  }
  Date modified(std::size_t row) const {
    const Row at = find(row);
    return at.segment.modifiedOf(at.row);
  }
  std::string folderPath(std::size_t row) const;
  /// All that is known of the row's inode; device and inode number are not.
  FileStatus status(std::size_t row) const;

 private:
  /// A row and the columns that it is in.
  struct Row {
    const SegmentColumns& segment;
    std::size_t row;
  };

  Row find(std::size_t row) const {
    const std::size_t baseRows = columns_.base.rowCount();
    if (row < baseRows) return {columns_.base, row};
    return {columns_.delta, row - baseRows};
  }
  ContentTypeId typeOf(Row row) const { return types_[row.segment.typeOf(row.row)]; }
  bool tellEntryCount(Row row, Value& value) const;

  const GenerationColumns& columns_;
  const std::vector<ContentTypeId>& types_;
  const TypeTables tables_;
  const FolderTable& folders_;
  const ClassVerdicts& verdicts_;
};

}  // namespace vt
