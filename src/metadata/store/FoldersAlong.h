#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/store/SegmentColumns.h"

namespace vt {

/// The folders of a segment on the way to `path`, absolute and canonical: "/" first, the one at the
/// path last. Empty when one of them is not in the segment. Costs a look at the parent of every
/// folder.
std::vector<std::uint32_t> foldersAlong(const SegmentColumns& segment, std::string_view path);

/// The other way round: the path of a folder of a segment.
std::string folderPathOf(const SegmentColumns& segment, std::uint32_t folder);

}  // namespace vt
