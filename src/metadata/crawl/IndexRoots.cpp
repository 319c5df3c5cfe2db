#include "metadata/crawl/IndexRoots.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vt {
namespace {

bool isIn(std::string_view path, std::string_view folder) {
  if (folder == "/") return true;
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace

std::vector<std::string> outermostRoots(std::vector<std::string> paths) {
  // A folder comes before all that lie in it, though "/a b" comes between "/a" and "/a/b": as
  // what is kept last is not always what holds the next, all that is kept is looked at.
  std::ranges::sort(paths);
  std::vector<std::string> roots;
  for (std::string& path : paths) {
    const bool isCovered =
        std::ranges::any_of(roots, [&](const std::string& root) { return isIn(path, root); });
    if (!isCovered) roots.push_back(std::move(path));
  }
  return roots;
}

}  // namespace vt
