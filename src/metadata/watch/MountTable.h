#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/live/Descriptor.h"
#include "metadata/watch/WatchScope.h"

namespace vt {

/// A place where a file system, or part of one, is mounted.
struct Mount {
  std::uint64_t id = 0;      ///< given anew with each mount
  std::uint64_t device = 0;  ///< as FileStatus numbers it
  std::string root;          ///< what of the file system is mounted here, a path in it
  std::string point;         ///< where: absolute and canonical
  std::string type;          ///< "ext4", "nfs4", …

  bool operator==(const Mount&) const = default;
};

/// Takes the lines of /proc/PID/mountinfo apart; a line that makes no sense is passed over. In the
/// order in which they are mounted.
std::vector<Mount> parseMounts(std::string_view text);

/// Those of which something is seen below the roots: the one that each root is on, and those
/// inside.
std::vector<Mount> mountsSeen(const std::vector<Mount>& all, const WatchScope& scope);

/// Whether other machines may change the files there without this kernel being told.
bool isSharedByMachines(const Mount& mount);
/// That in words, after the name of a file system.
inline constexpr const char* kOtherMachines = "other machines may change its files";

/// The mounts that this process sees, read again only when the kernel says that they have changed.
class MountTable {
 public:
  MountTable();

  /// Whether anything was mounted or unmounted since the last call, or ever before the first.
  bool hasChanged();
  /// All mounts, as they are now.
  std::vector<Mount> read();

 private:
  Descriptor file_;
  bool isNew_ = true;
};

}  // namespace vt
