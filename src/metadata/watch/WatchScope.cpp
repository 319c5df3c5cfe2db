#include "metadata/watch/WatchScope.h"

#include <algorithm>

#include "metadata/crawl/IndexRoots.h"

namespace vt {

bool WatchScope::holds(std::string_view path) const {
  const auto holdsPath = [&](const std::string& folder) { return isInFolder(path, folder); };
  return std::ranges::any_of(roots, holdsPath) && std::ranges::none_of(ignored, holdsPath);
}

}  // namespace vt
