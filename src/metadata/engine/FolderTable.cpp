#include "metadata/engine/FolderTable.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "metadata/live/LiveFile.h"
#include "metadata/store/FoldersAlong.h"

namespace vt {

std::optional<std::uint32_t> indexedFolderAt(const SegmentColumns& segment, std::string_view path) {
  const std::vector<std::uint32_t> folders = foldersAlong(segment, path);
  const auto isRoot = [&](std::uint32_t folder) { return segment.areRoots[folder] != 0; };
  if (std::ranges::none_of(folders, isRoot)) return std::nullopt;
  if (segment.areListed[folders.back()] == 0) return std::nullopt;
  return folders.back();
}

FolderTable::FolderTable(const SegmentColumns& segment, std::vector<IndexedScope> scopes,
                         const ClassVerdicts& verdicts)
    : segment_(segment),
      scopes_(std::move(scopes)),
      isSearched_(segment.folderCount(), 0),
      scopeOf_(segment.folderCount(), 0) {
  // By folder; of scopes of one folder the first counts.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> starts;
  starts.reserve(scopes_.size());
  for (std::uint32_t i = 0; i < scopes_.size(); ++i) starts.emplace_back(scopes_[i].folder, i);
  std::ranges::sort(starts);
  auto start = starts.cbegin();
  // A folder's parent is before it.
  for (std::uint32_t folder = 0; folder < segment.folderCount(); ++folder) {
    const std::uint32_t parent = segment.parents[folder];
    if (start != starts.cend() && start->first == folder) {
      scopeOf_[folder] = start->second;
      isSearched_[folder] = 1;
      while (start != starts.cend() && start->first == folder) ++start;
    } else if (parent < folder && isSearched(parent) &&
               verdicts.maySearch(segment.classOfFolder(folder))) {
      scopeOf_[folder] = scopeOf_[parent];
      isSearched_[folder] = 1;
    }
  }
  // With one scope all paths begin alike, so only what comes after counts.
  if (scopes_.size() > 1) {
    keepsPathOrder_ = std::ranges::all_of(
        scopes_, [](const IndexedScope& scope) { return scope.shownPath == scope.canonicalPath; });
  }
}

std::vector<std::uint8_t> FolderTable::searchedIn(const SegmentColumns& segment) const {
  if (segment.folderNumbers.empty()) return isSearched_;
  std::vector<std::uint8_t> searched;
  searched.reserve(segment.folderNumbers.size());
  for (const std::uint32_t number : segment.folderNumbers) {
    searched.push_back(number < isSearched_.size() ? isSearched_[number] : 0);
  }
  return searched;
}

std::string FolderTable::pathOf(std::uint32_t folder) const { return pathOf(folder, {}); }

std::string FolderTable::pathOf(std::uint32_t folder, std::string_view name) const {
  const IndexedScope& scope = scopes_[scopeOf_[folder]];
  const std::string_view start = scope.shownPath == "/" ? std::string_view() : scope.shownPath;
  // Twice up to the scope folder: for the length, then to fill in the names from the end.
  std::size_t length = start.size() + (name.empty() ? 0 : 1 + name.size());
  for (std::uint32_t at = folder; at != scope.folder; at = segment_.parents[at]) {
    length += 1 + segment_.folderNames[at].size();
  }
  if (length == 0) return "/";
  std::string path(length, '/');
  std::size_t end = length;
  const auto prepend = [&](std::string_view step) {
    end -= step.size();
    step.copy(path.data() + end, step.size());
    --end;  // the slash that is there
  };
  if (!name.empty()) prepend(name);
  for (std::uint32_t at = folder; at != scope.folder; at = segment_.parents[at]) {
    prepend(segment_.folderNames[at]);
  }
  start.copy(path.data(), start.size());
  return path;
}

}  // namespace vt
