#pragma once

#include <sys/inotify.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "metadata/crawl/FileSystems.h"
#include "metadata/crawl/FolderOpener.h"
#include "metadata/live/FolderReader.h"
#include "metadata/watch/FileSystemWatch.h"
#include "metadata/watch/MountTable.h"
#include "metadata/watch/WatchedTree.h"

namespace vt {

/// Watches folder by folder, for any user and on any file system. Each folder takes memory and a
/// watch, of which a user has a limited number.
///
/// A folder is watched before it is listed, so that nothing falls between. When watches run out
/// the folders nearest to the roots have them.
class InotifyWatch final : public FileSystemWatch {
 public:
  const char* name() const override { return "inotify"; }
  const char* unit() const override { return "folders"; }
  int descriptor() const override { return inotify_.get(); }
  std::vector<std::string> unwatched() const override;
  std::string whyUnwatched() const override;
  void watchUnwatched(WatchInstant now) override;
  WatchCounts counts() const override;

 protected:
  Result<bool, std::string> restart(WatchInstant now) override;
  bool drain(WatchInstant now) override;
  std::vector<std::string> pathsOf(WatchedFolder folder) override;

 private:
  /// A folder that was moved away, to where the next events may tell.
  struct Moving {
    WatchedFolder folder;
    WatchedFolder parent;
    std::string name;
    WatchInstant since;
  };

  bool rebuild();
  void watchFrom(WatchedFolder folder);
  void watchOne(WatchedFolder folder, std::vector<WatchedFolder>& found);
  int addWatch(int folder);
  void listFolders(WatchedFolder folder, int open, const std::string& path,
                   std::vector<WatchedFolder>& found);
  void unwatch(WatchedFolder folder);
  void watchAnew(WatchedFolder parent, std::string_view name);
  void lookAtMounts(WatchInstant now);
  WatchedFolder folderAt(std::string_view path) const;
  void takeEvents(std::span<const char> bytes, WatchInstant now);
  void takeEvent(const inotify_event& event, std::string_view name, WatchInstant now);
  void takeFolder(WatchedFolder parent, const inotify_event& event, std::string_view name,
                  WatchInstant now);
  bool moveIn(WatchedFolder parent, std::string_view name, const Moving& moving);
  void giveUpMoving(WatchInstant now);
  void watchLost(WatchInstant now);
  bool isStarved(WatchedFolder folder) const { return starved_.contains(folder); }

  Descriptor inotify_;
  std::unique_ptr<WatchedTree> tree_ = std::make_unique<WatchedTree>();
  std::unordered_map<std::uint32_t, Moving> moving_;  // by cookie
  MountTable table_;
  std::vector<Mount> mounts_;
  FolderOpener opener_;
  FolderReader reader_;
  FileSystems fileSystems_;
  // Were not found where they should be: they may have been moved, as is not known yet.
  std::unordered_set<WatchedFolder> lost_;
  std::unordered_set<WatchedFolder> starved_;  // there was no watch for them
  int starvation_ = 0;                         // the system's reason
  bool hasOverflown_ = false;
  std::uint64_t overflows_ = 0;
};

}  // namespace vt
