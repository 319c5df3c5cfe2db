#pragma once

#include <cstdint>
#include <unordered_map>

namespace vt {

/// What is known of the file systems that a walk comes to. One thread at a time.
class FileSystems {
 public:
  /// Whether the file system of the open folder `folder` (one of O_PATH will do), which is that of
  /// `device` (as FileStatus numbers it), holds files of its own, rather than the kernel's view of
  /// itself (/proc, /sys, /dev, control groups and their like). Asked once for each device.
  bool holdsFiles(std::uint64_t device, int folder);

 private:
  std::unordered_map<std::uint64_t, bool> holdsFiles_;
};

}  // namespace vt
