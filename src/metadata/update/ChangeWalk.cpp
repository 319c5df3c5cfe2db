#include "metadata/update/ChangeWalk.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "metadata/live/FileStatus.h"
#include "metadata/rights/AclReader.h"

namespace vt {
namespace {

std::int64_t microsecondsOf(Date date) { return date.time_since_epoch().count(); }

std::int64_t createdOf(const FileStatus& status) {
  return status.created ? microsecondsOf(*status.created) : kNoDate;
}

Date dateOf(std::int64_t nanoseconds) {
  return std::chrono::floor<Date::duration>(
      std::chrono::sys_time<std::chrono::nanoseconds>{std::chrono::nanoseconds{nanoseconds}});
}

/// The path of the folder that the entry at `path` is in, and its name there.
std::pair<std::string_view, std::string_view> splitPath(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return {slash == 0 ? path.substr(0, 1) : path.substr(0, slash), path.substr(slash + 1)};
}

bool isPath(std::string_view path) { return path.starts_with('/'); }

}  // namespace

ChangeWalk::ChangeWalk(KnownIndex& index, const ContentTypes& types,
                       std::chrono::microseconds coarsestTick)
    : index_(index),
      scanner_(types, /*memory=*/nullptr),
      coarsestTick_(coarsestTick),
      now_(std::chrono::floor<Date::duration>(std::chrono::system_clock::now())),
      otherNames_(index),
      seesAll_(::geteuid() == 0) {}

void ChangeWalk::run(const FileChanges& changes) {
  lookAround(changes);
  // What led nowhere may be in a folder that was moved twice, by the name that it had meanwhile.
  const bool mayBeElsewhere =
      !moved_.empty() && std::ranges::any_of(changes.entries, [this](const std::string& path) {
        return !found_.contains(path) && isBelowCovered(path);
      });
  if (mayBeElsewhere) {
    for (const std::uint32_t folder : moved_) list(folder, Trust::kNone);
    lookAround(changes);
  }
  removeDetached();
  while (lookAtOtherNames()) {
    lookAround({});
    removeDetached();
  }
}

/// Has the other names looked at that files may have which were found to have changed or gone.
/// False when there are none that nobody has asked for.
bool ChangeWalk::lookAtOtherNames() {
  otherNames_.forEach(
      [this](std::uint32_t folder, std::string_view name) { lookAt(folder, std::string(name)); });
  return !queue_.empty();
}

void ChangeWalk::lookAround(const FileChanges& changes) {
  // Once more after each look, since folders may have come to paths that led nowhere before.
  for (takePaths(changes); !queue_.empty(); takePaths(changes)) {
    while (!queue_.empty()) {
      const std::uint32_t folder = queue_.extract(queue_.begin()).value().second;
      work(folder);
    }
  }
}

bool ChangeWalk::isBelowCovered(std::string_view path) const {
  if (!isPath(path)) return false;
  while (path.size() > 1) {
    path = splitPath(path).first;
    const std::uint32_t folder = index_.folders.at(path);
    if (folder != kNoFolder) return index_.folders.isCovered(folder);
  }
  return false;
}

void ChangeWalk::takePaths(const FileChanges& changes) {
  for (const std::string& path : changes.entries) takeEntry(path);
  for (const std::string& path : changes.folders) takeFolder(path, Trust::kAll);
  for (const std::string& path : changes.trees) takeFolder(path, Trust::kNone);
}

void ChangeWalk::takeEntry(const std::string& path) {
  if (!isPath(path)) return;
  const KnownFolders& folders = index_.folders;
  const std::uint32_t itself = folders.at(path);
  if (itself != kNoFolder && folders[itself].isRoot) {
    lookAtFolderItself(itself);
    return;
  }
  const auto [above, name] = splitPath(path);
  const std::uint32_t folder = folders.at(above);
  if (folder == kNoFolder || name.empty() || !folders.isCovered(folder)) return;
  found_.insert(path);
  lookAt(folder, std::string(name));
  lookAtFolderItself(folder);
}

void ChangeWalk::takeFolder(const std::string& path, Trust trust) {
  if (!isPath(path)) return;
  takeEntry(path);
  const KnownFolders& folders = index_.folders;
  const std::uint32_t folder = folders.at(path);
  if (folder == kNoFolder) return;
  if (folders.isCovered(folder)) {
    list(folder, trust);
  } else if (trust == Trust::kNone) {
    // What is above the indexed folders: all of them that are below.
    for (std::uint32_t root = 0; root < folders.size(); ++root) {
      if (folders[root].isRoot && folders.isIn(root, folder)) list(root, trust);
    }
  }
}

void ChangeWalk::lookAt(std::uint32_t folder, const std::string& name) {
  if (!seen_[folder].insert(name).second) return;
  tasks_[folder].names.insert(name);
  enqueue(folder);
}

void ChangeWalk::lookAtFolderItself(std::uint32_t folder) {
  const KnownFolder& known = index_.folders[folder];
  if (known.isRoot) {
    lookAt(folder, ".");
  } else if (known.parent != kNoFolder) {
    lookAt(known.parent, std::string(known.name));
  }
}

void ChangeWalk::list(std::uint32_t folder, Trust trust) {
  const auto listed = listed_.find(folder);
  if (listed != listed_.end() && listed->second >= trust) return;
  std::optional<Trust>& listing = tasks_[folder].listing;
  listing = listing ? std::max(*listing, trust) : trust;
  enqueue(folder);
}

void ChangeWalk::work(std::uint32_t folder) {
  if (index_.folders[folder].isGone) return;
  const std::optional<std::string> path = index_.folders.pathOf(folder);
  if (!path) {
    waiting_.push_back(folder);
    return;
  }
  const auto found = tasks_.find(folder);
  if (found == tasks_.end()) return;
  const Task task = std::move(found->second);
  tasks_.erase(found);
  if (!task.names.empty()) {
    const Descriptor open = opener_.find(*path);
    const std::optional<FileStatus> status =
        open.isOpen() ? statusOf(open.get()) : std::optional<FileStatus>();
    const FolderStamp& stamp = index_.folders[folder].stamp;
    if (status && status->device == stamp.device && status->inode == stamp.inode) {
      lookAtNames(folder, open.get(), task.names);
    } else if (index_.folders[folder].isRoot || !notFound_.insert(folder).second) {
      list(folder, Trust::kNone);
    } else {
      // Whoever named what is in it may not have said that it went, or is another.
      const KnownFolder& known = index_.folders[folder];
      seen_[known.parent].erase(known.name);
      lookAtFolderItself(folder);
      Task& again = tasks_[folder];
      again = task;
      enqueue(folder);
      return;
    }
  }
  if (task.listing) scan(folder, *path, *task.listing);
}

void ChangeWalk::lookAtNames(std::uint32_t folder, int open, const std::set<std::string>& names) {
  std::unordered_map<std::string_view, std::uint32_t> rows;
  for (const std::string& name : names) rows.emplace(name, kNoRow);
  index_.forEachIn(folder, [&](std::uint32_t row, std::string_view name) {
    if (const auto wanted = rows.find(name); wanted != rows.end()) wanted->second = row;
  });
  for (const std::string& name : names) {
    if (name == ".") {
      refreshRoot(folder, open);
      continue;
    }
    const std::uint32_t row = rows.at(name);
    const bool isThere = scanner_.look(open, name, [&](std::span<CrawledEntry> entries) {
      arrive(folder, row, entries.front(), Trust::kAll);
      // Also when it is as known: a crawl may have come to its names before and after a change.
      otherNames_.noteArrival(open, name.c_str(), entries.front().status);
      return true;
    });
    if (!isThere && row != kNoRow) depart(row);
  }
}

void ChangeWalk::refreshRoot(std::uint32_t folder, int open) {
  CrawledEntry entry;
  const std::optional<FileStatus> status = statusOf(open);
  if (!status) return;
  entry.status = *status;
  std::vector<std::uint8_t> bytes;
  entry.acl = readAclBytes(open, ".", bytes);
  entry.aclBytes = bytes;
  const std::uint32_t accessClass = index_.classOf(entry);
  KnownFolder& known = index_.folders[folder];
  if (known.accessClass == accessClass) return;
  known.accessClass = accessClass;
  hasChangedFolders_ = true;
  if (!seesAll_) list(folder, Trust::kNone);
}

void ChangeWalk::scan(std::uint32_t folder, const std::string& path, Trust trust) {
  const auto [listed, isFirst] = listed_.try_emplace(folder, trust);
  if (!isFirst && listed->second >= trust) return;
  listed->second = trust;
  const KnownFolder& known = index_.folders[folder];
  PendingFolder pending;
  pending.id = folder;
  pending.path = path;
  pending.device = known.stamp.device;
  pending.inode = known.stamp.inode;
  if (known.isRoot) {
    pending.isMountPoint = true;  // for all that is known
    const Descriptor open = opener_.find(path);
    const std::optional<FileStatus> status =
        open.isOpen() ? statusOf(open.get()) : std::optional<FileStatus>();
    if (status) {
      pending.device = status->device;
      pending.inode = status->inode;
      refreshRoot(folder, open.get());
    }
  } else {
    pending.isMountPoint = index_.folders[known.parent].stamp.device != known.stamp.device;
  }
  std::unordered_map<std::string, std::uint32_t> rows;
  index_.forEachIn(folder,
                   [&](std::uint32_t row, std::string_view name) { rows.emplace(name, row); });
  std::vector<std::pair<std::string, FileStatus>> changed;  // files
  const FolderScanner::Outcome outcome =
      scanner_.scan(pending, [&](std::span<CrawledEntry> entries) {
        for (const CrawledEntry& entry : entries) {
          const auto found = rows.extract(std::string(entry.name));
          const std::uint32_t row = found ? found.mapped() : kNoRow;
          const bool isFile = !entry.status.isFolder();
          if (isFile && (row == kNoRow || !index_.isLive(row) || !index_.isAsKnown(row, entry))) {
            changed.emplace_back(entry.name, entry.status);
          }
          arrive(folder, row, entry, trust);
        }
        return true;
      });
  for (const auto& [name, row] : rows) depart(row);
  if (!changed.empty()) {
    const Descriptor open = opener_.find(path);
    for (const auto& [name, status] : changed) {
      if (open.isOpen()) otherNames_.noteArrival(open.get(), name.c_str(), status);
    }
  }
  if (outcome.stamp.inode != 0) index_.folders.setStamp(folder, outcome.stamp);
  if (index_.folders[folder].isListed != outcome.isComplete) hasChangedFolders_ = true;
  index_.folders[folder].isListed = outcome.isComplete;
  index_.folders[folder].seen = now_;
}

void ChangeWalk::arrive(std::uint32_t folder, std::uint32_t row, const CrawledEntry& entry,
                        Trust trust) {
  // What it was may have gone elsewhere meanwhile.
  if (row != kNoRow && !index_.isLive(row)) row = kNoRow;
  if (entry.status.isFolder()) {
    arriveFolder(folder, row, entry, trust);
    return;
  }
  if (row != kNoRow) {
    if (index_.isAsKnown(row, entry)) return;
    depart(row);  // it may be another file in its place, or itself
  }
  index_.add(folder, entry, kNoFolder);
}

void ChangeWalk::arriveFolder(std::uint32_t folder, std::uint32_t row, const CrawledEntry& entry,
                              Trust trust) {
  const std::uint32_t own = row == kNoRow ? kNoFolder : index_.ownFolderOf(row);
  if (own != kNoFolder && isSame(index_.folders[own], entry)) {
    const KnownFolder& known = index_.folders[own];
    const bool isSure = isSurelySame(known);
    const bool hasChanged = !isUnchanged(known, entry);
    const bool mayShowOthers = !seesAll_ && known.accessClass != index_.classOf(entry);
    if (!index_.isAsKnown(row, entry)) {
      index_.remove(row);
      index_.add(folder, entry, own);
    }
    if (trust == Trust::kNone || mayShowOthers) {
      list(own, Trust::kNone);
    } else if (!isSure || (trust == Trust::kStamps && hasChanged)) {
      list(own, Trust::kStamps);
    }
    return;
  }
  if (row != kNoRow) depart(row);
  if (const std::uint32_t moved = findMoved(entry, folder); moved != kNoFolder) {
    moveHere(moved, folder, entry);
    list(moved, std::max(trust, Trust::kStamps));
    return;
  }
  KnownFolder added;
  added.parent = folder;
  added.name = entry.name;
  added.stamp.device = entry.status.device;
  added.stamp.inode = entry.status.inode;
  added.seen = now_;
  const std::uint32_t number = index_.folders.add(std::move(added));
  index_.add(folder, entry, number);
  list(number, Trust::kNone);
}

void ChangeWalk::depart(std::uint32_t row) {
  if (!index_.isLive(row)) return;
  const std::uint32_t own = index_.ownFolderOf(row);
  if (own == kNoFolder) otherNames_.noteDeparture(row);
  index_.remove(row);
  if (own == kNoFolder) return;
  index_.folders.detach(own);
  detached_.insert(own);
}

std::uint32_t ChangeWalk::findMoved(const CrawledEntry& entry, std::uint32_t newParent) {
  KnownFolders& folders = index_.folders;
  for (const std::uint32_t same : folders.sameAs(entry.status.device, entry.status.inode)) {
    const KnownFolder& known = folders[same];
    if (known.isGone || known.row == kNoRow || !isSame(known, entry)) continue;
    // Of folders that are mounted in two places one can be in the other.
    if (folders.isIn(newParent, same) || isStillAt(same, entry)) continue;
    return same;
  }
  return kNoFolder;
}

/// Whether the folder is where it is known to be, so that it was not moved: file systems can be
/// mounted in two places.
bool ChangeWalk::isStillAt(std::uint32_t folder, const CrawledEntry& entry) {
  const KnownFolder& known = index_.folders[folder];
  if (known.parent == kNoFolder) return false;
  const std::optional<std::string> above = index_.folders.pathOf(known.parent);
  if (!above) return false;
  const Descriptor open = opener_.find(*above);
  const std::optional<FileStatus> there =
      open.isOpen() ? statusOf(open.get(), known.name.c_str()) : std::optional<FileStatus>();
  return there && there->isSameFileAs(entry.status);
}

void ChangeWalk::moveHere(std::uint32_t moved, std::uint32_t folder, const CrawledEntry& entry) {
  const std::uint32_t row = index_.folders[moved].row;
  if (index_.isLive(row)) index_.remove(row);
  const std::uint32_t before = index_.folders[moved].parent;
  index_.folders.detach(moved);
  detached_.erase(moved);
  if (before != kNoFolder) lookAtFolderItself(before);
  moved_.push_back(moved);
  index_.folders.attach(moved, folder, entry.name);
  index_.add(folder, entry, moved);
  for (const std::uint32_t waiting : waiting_) enqueue(waiting);
  waiting_.clear();
}

void ChangeWalk::removeDetached() {
  std::vector<std::uint32_t> rows;
  for (const std::uint32_t detached : detached_) {
    index_.folders.remove(detached, [&](std::uint32_t folder) {
      rows.clear();
      index_.forEachIn(folder, [&](std::uint32_t row, std::string_view) { rows.push_back(row); });
      for (const std::uint32_t row : rows) {
        if (index_.ownFolderOf(row) == kNoFolder) otherNames_.noteDeparture(row);
        index_.remove(row);
      }
    });
  }
  detached_.clear();
}

/// Whether the entry is the folder, wherever it was. Numbers of inodes are given again, and mostly
/// soon.
bool ChangeWalk::isSame(const KnownFolder& known, const CrawledEntry& entry) {
  return known.stamp.device == entry.status.device && known.stamp.inode == entry.status.inode &&
         known.created == createdOf(entry.status);
}

/// Whether a folder that isSame() can be no other: one that was made in the same tick after it was
/// looked at, with the number of one that had gone by then, would have been made too late.
bool ChangeWalk::isSurelySame(const KnownFolder& known) const {
  return known.created != kNoDate && known.created < microsecondsOf(known.seen - coarsestTick_);
}

/// Whether the names in a folder are those that are known.
bool ChangeWalk::isUnchanged(const KnownFolder& known, const CrawledEntry& entry) const {
  const Date modified = dateOf(known.stamp.modified);
  const Date changed = dateOf(known.stamp.attributesChanged);
  return known.isListed && modified == entry.status.modified &&
         changed == entry.status.attributesChanged && modified < known.seen - coarsestTick_ &&
         changed < known.seen - coarsestTick_;
}

}  // namespace vt
