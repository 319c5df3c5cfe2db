#include "metadata/live/SearchScopes.h"

#include <optional>
#include <unordered_set>
#include <utility>

#include "metadata/live/PathResolver.h"

namespace vt {

SearchScopes findSearchScopes(const std::vector<std::string>& paths, const AccessJudge& judge) {
  SearchScopes scopes;
  std::unordered_set<std::string> canonicalPaths;
  for (const std::string& path : paths) {
    std::optional<ResolvedPath> found = resolvePath(path, LastLink::kFollow, judge);
    if (!found || !found->status.isFolder() ||
        !maySearchFolder(found->file.get(), found->status, judge)) {
      scopes.unusable.push_back(path);
    } else if (canonicalPaths.insert(found->canonicalPath).second) {
      scopes.usable.push_back({path, std::move(found->shownPath), std::move(found->canonicalPath),
                               std::move(found->file)});
    }
  }
  return scopes;
}

}  // namespace vt
