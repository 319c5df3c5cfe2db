#pragma once

#include <cstddef>

#include "metadata/store/Bitmap.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

struct IndexGeneration;

/// What a generation holds: rows of its base that still count, and those of its delta. Both name
/// the folders, classes and types of the newest tables. Borrowed from the open segments.
struct GenerationColumns {
  SegmentColumns base;
  SegmentColumns delta;  ///< without a row when there is none
  Bitmap dead;           ///< rows of the base that do not count
  std::size_t deadCount = 0;
  /// A folder was moved or renamed since the base was made: rows of it that are equally old need
  /// not be in the order of their paths.
  bool hasMovedFolders = false;

  /// How many entries there are.
  std::size_t entryCount() const { return base.rowCount() - deadCount + delta.rowCount(); }
};

/// Takes a pass over the folders.
GenerationColumns columnsOf(const IndexGeneration& generation);

}  // namespace vt
