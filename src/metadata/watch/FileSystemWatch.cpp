#include "metadata/watch/FileSystemWatch.h"

#include <algorithm>
#include <set>
#include <utility>

#include "metadata/crawl/IndexRoots.h"
#include "metadata/live/LiveFile.h"
#include "metadata/watch/ChangeCompaction.h"

namespace vt {
namespace {

// Of folders, in one batch. Nobody but a program makes more.
constexpr std::size_t kMostMoves = 4096;

}  // namespace

Result<bool, std::string> FileSystemWatch::start(WatchScope scope, WatchInstant now) {
  scope_ = std::move(scope);
  std::erase_if(scope_.ignored, [this](const std::string& folder) {
    return std::ranges::none_of(scope_.roots,
                                [&](const auto& root) { return isInFolder(folder, root); });
  });
  collector_ = ChangeCollector();
  told_.clear();
  moves_.clear();
  haveFoldersMoved_ = isLooking_ = hasLooked_ = false;
  seenUntil_ = now;
  forgetFolders();
  return restart(now);
}

void FileSystemWatch::collect(WatchInstant now) {
  if (!drain(now)) return;
  seenUntil_ = now;
  // Only now is every move known that can have come in the way of who looked at what was told.
  if (std::exchange(haveFoldersMoved_, false)) tellAgain(now);
  if (isLooking_) return;
  told_.clear();
  hasLooked_ = false;
  if (collector_.isEmpty()) forgetFolders();
}

void FileSystemWatch::tellAgain(WatchInstant now) {
  for (const CollectedFolder& told : told_) {
    if (told.isToBeListed) collector_.addTree(told.folder, "", now);
    for (const std::string& name : told.entries) collector_.addEntry(told.folder, name, now);
    for (const std::string& name : told.trees) collector_.addTree(told.folder, name, now);
  }
}

std::optional<WatchBatch> FileSystemWatch::take(WatchInstant now) {
  const std::optional<WatchInstant> due = collector_.due();
  if (!due || *due > now) return std::nullopt;
  CollectedChanges collected = collector_.take(now);
  const std::vector<Move> moves = std::exchange(moves_, {});
  WatchBatch batch;
  batch.seenUntil = seenUntil_;
  if (collected.isEverything) batch.changes.trees = scope_.roots;
  for (CollectedFolder& names : collected.folders) {
    add(names, batch.changes);
    told_.push_back(std::move(names));
  }
  for (std::string& path : collected.trees) {
    if (scope_.holds(path)) batch.changes.trees.push_back(std::move(path));
  }
  if (!collected.isEverything) addMoves(moves, batch.changes);
  batch.changes = compactedChanges(std::move(batch.changes));
  if (batch.changes.empty()) return std::nullopt;
  beginLook();
  return batch;
}

void FileSystemWatch::add(const CollectedFolder& names, FileChanges& changes) {
  for (const std::string& path : pathsOf(names.folder)) {
    const auto addTo = [&](std::vector<std::string>& list, const std::string& name) {
      std::string changed = name.empty() ? path : joinPath(path, name);
      if (scope_.holds(changed)) list.push_back(std::move(changed));
    };
    if (names.isToBeListed) addTo(changes.folders, "");
    for (const std::string& name : names.entries) addTo(changes.entries, name);
    for (const std::string& name : names.trees) addTo(changes.trees, name);
  }
}

void FileSystemWatch::addMoves(const std::vector<Move>& moves, FileChanges& changes) {
  if (moves.empty()) return;
  // A path below a folder that was moved means one file to who remembers what was there, and
  // another to who looks: such a folder can't be known again by what it held.
  std::set<std::string> named(changes.entries.begin(), changes.entries.end());
  named.insert(changes.trees.begin(), changes.trees.end());
  for (const std::string& folder : changes.folders) named.insert(joinPath(folder, ""));
  const auto isNamedBelow = [&](const std::string& folder) {
    const auto next = named.lower_bound(joinPath(folder, ""));
    return next != named.end() && isInFolder(*next, folder);
  };
  for (const Move& move : moves) {
    const std::vector<std::string> from = pathsOf(move.from);
    for (const std::string& path : pathsOf(move.to)) {
      std::string target = joinPath(path, move.toName);
      const bool isAmbiguous =
          isNamedBelow(target) || std::ranges::any_of(from, [&](const std::string& source) {
            return isNamedBelow(joinPath(source, move.fromName));
          });
      if (isAmbiguous && scope_.holds(target)) changes.trees.push_back(std::move(target));
    }
  }
}

void FileSystemWatch::folderMoved(WatchedFolder from, std::string_view fromName, WatchedFolder to,
                                  std::string_view toName, WatchInstant now, bool isUnsure) {
  haveFoldersMoved_ = true;
  // Who was looking may have seen half of the folder under the old path, and what is new was seen
  // by nobody; of any other it is enough to tell that it moved.
  isUnsure = isUnsure || hasLooked_ || collector_.isTree(from, fromName);
  collector_.addEntry(from, fromName, now);
  if (moves_.size() < kMostMoves) {
    moves_.push_back({from, std::string(fromName), to, std::string(toName)});
  } else {
    collector_.addEverything(now);
  }
  if (isUnsure) {
    collector_.addTree(to, toName, now);
  } else {
    collector_.addEntry(to, toName, now);
  }
}

}  // namespace vt
