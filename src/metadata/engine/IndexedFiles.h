#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "metadata/engine/ClassVerdicts.h"
#include "metadata/engine/FolderTable.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/LiveAttribute.h"
#include "metadata/live/LiveFile.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// Tells attributes of the rows of a segment as a live search tells those of files. Borrows all.
class IndexedFiles {
 public:
  IndexedFiles(const SegmentColumns& segment, const std::vector<ContentTypeId>& types,
               const TypeTables& tables, const FolderTable& folders, const ClassVerdicts& verdicts)
      : segment_(segment), types_(types), tables_(tables), folders_(folders), verdicts_(verdicts) {}

  /// Puts the attribute's value into `value`; false when the row has none. The row must be in a
  /// folder that is searched for kPath to be told. The number of a folder's entries is told to who
  /// may list it.
  bool tell(LiveAttribute attribute, std::size_t row, Value& value) const;

  std::string_view name(std::size_t row) const { return segment_.name(row); }
  ContentTypeId type(std::size_t row) const { return types_[segment_.typeOf(row)]; }
  std::string folderPath(std::size_t row) const;
  /// All that is known of the row's inode; device and inode number are not.
  FileStatus status(std::size_t row) const;

 private:
  bool tellEntryCount(std::size_t row, Value& value) const;

  const SegmentColumns& segment_;
  const std::vector<ContentTypeId>& types_;
  const TypeTables tables_;
  const FolderTable& folders_;
  const ClassVerdicts& verdicts_;
};

}  // namespace vt
