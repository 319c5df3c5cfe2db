#include "metadata/live/FolderWalk.h"

#include <fcntl.h>

#include <optional>
#include <utility>

#include "metadata/live/LiveFile.h"
#include "metadata/live/OpenForReading.h"
#include "metadata/live/PathResolver.h"

namespace vt {

bool FolderWalk::walk(int root, std::string_view path) {
  levels_.clear();
  path_ = path;
  enter(openForReading(root, ".", O_DIRECTORY), {});
  if (levels_.empty()) return false;
  while (!levels_.empty() && visitor_.goesOn()) {
    const std::size_t last = levels_.size() - 1;
    Level& level = levels_[last];
    path_.resize(level.pathSize);
    if (level.unvisited.empty()) {
      levels_.pop_back();
      continue;
    }
    const int folder = folderOf(last);
    if (folder < 0) {
      levels_.pop_back();
      continue;
    }
    std::string name = std::move(level.unvisited.back());
    level.unvisited.pop_back();
    Descriptor below = openForReading(folder, name.c_str(), O_DIRECTORY);
    enter(std::move(below), std::move(name));
  }
  return true;
}

void FolderWalk::enter(Descriptor folder, std::string name) {
  if (!folder.isOpen()) return;
  const std::optional<FileStatus> status = statusOf(folder.get());
  if (!status || !maySearchFolder(folder.get(), *status, judge_)) return;
  if (!levels_.empty()) {
    if (!path_.ends_with('/')) path_ += '/';
    path_ += name;
  }
  levels_.push_back({std::move(folder), std::move(name), *status, path_.size(), {}});
  keepOpen(levels_.size() - 1);
  list(levels_.back());
}

void FolderWalk::list(Level& level) {
  const int folder = level.folder.get();
  std::size_t entries = 0;
  reader_.list(folder, [&](const char* name, EntryKind kind) {
    if (!visitor_.goesOn()) return;
    ++entries;
    if (kind == EntryKind::kUnknown) {
      const std::optional<FileStatus> status = statusOf(folder, name);
      if (!status) return;
      kind = entryKindOf(*status);
    }
    visitor_.visit({folder, path_, name, kind});
    if (kind == EntryKind::kFolder && visitor_.entersFolder(path_, name)) {
      level.unvisited.emplace_back(name);
    }
  });
  visitor_.leaveListing(entries);
}

int FolderWalk::folderOf(std::size_t level) {
  // The root stays open, so there is always a level to start from.
  std::size_t open = level;
  while (!levels_[open].folder.isOpen()) --open;
  for (; open < level; ++open) {
    Level& next = levels_[open + 1];
    Descriptor folder = openForReading(levels_[open].folder.get(), next.name.c_str(), O_DIRECTORY);
    const std::optional<FileStatus> status =
        folder.isOpen() ? statusOf(folder.get()) : std::nullopt;
    if (!status || !status->isSameFileAs(next.status)) return -1;
    next.folder = std::move(folder);
    keepOpen(open + 1);
  }
  return levels_[level].folder.get();
}

void FolderWalk::keepOpen(std::size_t level) {
  if (level >= kMostOpenFolders) levels_[level + 1 - kMostOpenFolders].folder.close();
}

}  // namespace vt
