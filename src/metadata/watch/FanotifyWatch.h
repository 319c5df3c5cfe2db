#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "metadata/crawl/FileSystems.h"
#include "metadata/crawl/FolderOpener.h"
#include "metadata/watch/FanotifyEvents.h"
#include "metadata/watch/FileSystemWatch.h"
#include "metadata/watch/FolderHandles.h"
#include "metadata/watch/MountTable.h"

namespace vt {

/// Watches whole file systems, for the superuser. Costs the same however many folders there are.
///
/// Needs Linux 5.17, and file systems that have handles: overlays, for one, have none.
class FanotifyWatch final : public FileSystemWatch {
 public:
  const char* name() const override { return "fanotify"; }
  const char* unit() const override { return "file systems"; }
  int descriptor() const override { return group_.get(); }
  std::vector<std::string> unwatched() const override;
  std::string whyUnwatched() const override;
  void watchUnwatched(WatchInstant now) override;
  WatchCounts counts() const override;

 protected:
  Result<bool, std::string> restart(WatchInstant now) override;
  bool drain(WatchInstant now) override;
  std::vector<std::string> pathsOf(WatchedFolder folder) override;
  void forgetFolders() override;

 private:
  struct MountedSystem {
    Mount mount;
    std::string fileSystem;  // as events call it
    std::string failure;     // why it is not watched; "" when it is

    bool isSeen() const { return failure.empty() && !isSharedByMachines(mount); }
  };

  MountedSystem watch(const Mount& mount);
  void lookAtMounts(WatchInstant now);
  void takeEvent(const FanotifyEvent& event, WatchInstant now);
  WatchedFolder numberOf(const FanotifyName& name) { return handles_.numberOf(name.folder); }
  bool isOutside(WatchedFolder folder);
  std::optional<std::string> pathBehind(const Descriptor& folder);

  Descriptor group_;
  MountTable table_;
  std::vector<MountedSystem> mounts_;
  bool mayMountsHaveMoved_ = false;
  FolderHandles handles_;
  bool isPathUnsure_ = false;  // of the folder that was asked for last
  FolderOpener opener_;
  FileSystems fileSystems_;
  std::uint64_t overflows_ = 0;
  WatchInstant now_;
};

}  // namespace vt
