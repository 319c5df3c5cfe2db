#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/live/Descriptor.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/FolderReader.h"
#include "metadata/rights/AccessJudge.h"

namespace vt {

/// An entry that the walk came upon. All of it is good only during the visit.
struct WalkedEntry {
  int folder;                   ///< open, to reach the entry from
  std::string_view folderPath;  ///< the walk's own path and what was walked below it
  const char* name;             ///< bytes, ended by NUL
  EntryKind kind;               ///< never kUnknown
};

/// Is told what a walk comes upon.
class FolderVisitor {
 public:
  virtual ~FolderVisitor() = default;

  /// Called for each entry; for a folder before what is in it.
  virtual void visit(const WalkedEntry& entry) = 0;
  /// Whether the walk goes into the folder called `name` in `folderPath`.
  virtual bool entersFolder(std::string_view folderPath, std::string_view name) = 0;
  /// Called when the entries of one folder, `entries` of them, have been visited, before those of
  /// the folders in it.
  virtual void leaveListing(std::size_t /*entries*/) {}
  /// Asked before each entry; once it is false, the walk ends.
  virtual bool goesOn() { return true; }
};

/// Walks all that lies below a folder and the judged account may reach: every folder on the way
/// grants it search permission. Whether it may read an entry is for the visitor to judge.
///
/// Starts each step from an open folder and follows no link, so that nobody can lead it astray by
/// swapping one in, nor a loop hold it. Neither the depth of the tree nor the length of its paths
/// is bounded; at most kMostOpenFolders descriptors are open at once. Folders that vanish, move or
/// cannot be listed are left out. Other file systems are entered.
class FolderWalk {
 public:
  static constexpr std::size_t kMostOpenFolders = 32;

  /// Both are borrowed for the life of the walk.
  FolderWalk(const AccessJudge& judge, FolderVisitor& visitor) : judge_(judge), visitor_(visitor) {}

  /// Walks below the folder that `root` names (one of O_PATH will do), calling it `path`. False,
  /// with nothing visited, when the folder may not be searched or the process cannot list it.
  bool walk(int root, std::string_view path);

 private:
  struct Level {
    Descriptor folder;  // closed when too many are open
    std::string name;
    FileStatus status;  // to know the folder again
    std::size_t pathSize = 0;
    std::vector<std::string> unvisited;  // names of the folders in it, taken from the end
  };

  void enter(Descriptor folder, std::string name);
  void list(Level& level);
  /// The descriptor of a level, opened again if need be; -1 when it is no longer there.
  int folderOf(std::size_t level);
  void keepOpen(std::size_t level);

  const AccessJudge& judge_;
  FolderVisitor& visitor_;
  FolderReader reader_;
  std::vector<Level> levels_;
  std::string path_;  // of the last level
};

}  // namespace vt
