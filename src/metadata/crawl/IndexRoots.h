#pragma once

#include <string>
#include <vector>

namespace vt {

/// The folders to walk so that everything below each of `paths` is walked once: sorted, without
/// repeated ones and those that lie in another. `paths` are absolute and canonical.
std::vector<std::string> outermostRoots(std::vector<std::string> paths);

}  // namespace vt
