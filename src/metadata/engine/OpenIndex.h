#pragma once

#include <memory>
#include <vector>

#include "metadata/store/Segment.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// A segment that is ready to be searched, and its types by this process's table.
struct OpenIndex {
  SegmentColumns segment;
  SegmentIdentity identity;
  std::vector<ContentTypeId> types;    ///< by the segment's own numbers
  std::shared_ptr<const void> memory;  ///< what the columns are borrowed from
};

/// The segment, ready to be searched; nullptr when it knows a type that the table lacks.
std::shared_ptr<const OpenIndex> openIndex(std::shared_ptr<const Segment> segment,
                                           const ContentTypes& types);

}  // namespace vt
