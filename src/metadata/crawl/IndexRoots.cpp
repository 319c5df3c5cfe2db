#include "metadata/crawl/IndexRoots.h"

#include <algorithm>
#include <utility>

namespace vt {

bool isInFolder(std::string_view path, std::string_view folder) {
  if (folder == "/") return true;
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool isInAnyFolder(std::string_view path, const std::unordered_set<std::string_view>& folders) {
  if (folders.empty()) return false;
  while (!folders.contains(path)) {
    if (path == "/") return false;
    path = folderAbove(path);
  }
  return true;
}

std::string_view folderAbove(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return path.substr(0, std::max<std::size_t>(slash, 1));
}

std::vector<std::string> outermostRoots(std::vector<std::string> paths) {
  // A folder comes before all that lie in it.
  std::ranges::sort(paths);
  std::vector<std::string> roots;
  roots.reserve(paths.size());  // so that no view moves
  std::unordered_set<std::string_view> known;
  for (std::string& path : paths) {
    if (!isInAnyFolder(path, known)) known.insert(roots.emplace_back(std::move(path)));
  }
  return roots;
}

}  // namespace vt
