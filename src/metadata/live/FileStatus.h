#pragma once

#include <cstdint>
#include <optional>

#include "foundation/Date.h"
#include "metadata/rights/AccessJudge.h"

namespace vt {

/// What a file's inode says of it.
struct FileStatus {
  FileOwnership ownership;
  std::uint64_t sizeInBytes = 0;
  std::uint64_t allocatedBytes = 0;
  Date modified;
  Date accessed;
  Date attributesChanged;
  std::optional<Date> created;  ///< not every file system keeps it
  std::uint64_t device = 0;
  std::uint64_t inode = 0;

  bool isFolder() const;
  bool isRegularFile() const;
  bool isLink() const;
  /// Whether both are the same file, as device and inode number tell.
  bool isSameFileAs(const FileStatus& other) const {
    return device == other.device && inode == other.inode;
  }
};

/// The status of the entry `name` (ended by NUL) of the open folder `folder`, a link's own; nothing
/// when there is none or it may not be asked.
std::optional<FileStatus> statusOf(int folder, const char* name);

/// The status of an open file, one of O_PATH included.
std::optional<FileStatus> statusOf(int descriptor);

}  // namespace vt
