#include "scopes/FolderPaths.h"

namespace vt {

std::vector<std::string> pathsCoveredBy(const ObjectArray<VTSearchFolder>& folders) {
  std::vector<std::string> covered;
  for (const std::shared_ptr<VTSearchFolder>& folder : folders) {
    const std::shared_ptr<Array> paths = folder->paths();
    if (!paths) continue;
    for (const Value& path : *paths) {
      if (const auto* text = path.get<std::string>()) covered.push_back(*text);
    }
  }
  return covered;
}

}  // namespace vt
