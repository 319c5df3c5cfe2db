#pragma once

#include <string>
#include <vector>

#include "foundation/ObjectArray.h"
#include "scopes/VTSearchFolder.h"

namespace vt {

/// The absolute paths that the folders cover, in their order. A folder whose path was never set
/// covers none.
std::vector<std::string> pathsCoveredBy(const ObjectArray<VTSearchFolder>& folders);

}  // namespace vt
