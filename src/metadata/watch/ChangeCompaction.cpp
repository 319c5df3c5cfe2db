#include "metadata/watch/ChangeCompaction.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "metadata/crawl/IndexRoots.h"

namespace vt {
namespace {

using Folders = std::unordered_set<std::string_view>;

void makeUnique(std::vector<std::string>& paths) {
  std::ranges::sort(paths);
  const auto rest = std::ranges::unique(paths);
  paths.erase(rest.begin(), rest.end());
}

/// The folder, or the one above or around both, that holds `path` too.
std::string_view commonFolder(std::string_view folder, std::string_view path) {
  while (!isInFolder(path, folder)) folder = folderAbove(folder);
  return folder;
}

}  // namespace

FileChanges compactedChanges(FileChanges changes, std::size_t mostFolders) {
  changes.trees = outermostRoots(std::move(changes.trees));
  makeUnique(changes.folders);
  makeUnique(changes.entries);
  const Folders trees(changes.trees.begin(), changes.trees.end());
  std::erase_if(changes.folders,
                [&](const std::string& path) { return isInAnyFolder(path, trees); });
  Folders listed(changes.folders.begin(), changes.folders.end());
  std::erase_if(changes.entries, [&](const std::string& path) {
    return isInAnyFolder(path, trees) || listed.contains(folderAbove(path));
  });

  Folders& all = listed;
  for (const std::string& path : changes.entries) all.insert(folderAbove(path));
  all.insert(trees.begin(), trees.end());
  if (all.size() <= mostFolders) return changes;
  std::string_view common = *all.begin();
  for (const std::string_view folder : all) common = commonFolder(common, folder);
  FileChanges tree;
  tree.trees = {std::string(common)};
  return tree;
}

}  // namespace vt
