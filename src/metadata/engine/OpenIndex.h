#pragma once

#include <memory>
#include <vector>

#include "metadata/store/SegmentColumns.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// A segment that is ready to be searched, and its types by this process's table.
struct OpenIndex {
  SegmentColumns segment;
  std::vector<ContentTypeId> types;    ///< by the segment's own numbers
  std::shared_ptr<const void> memory;  ///< what the columns are borrowed from
};

}  // namespace vt
