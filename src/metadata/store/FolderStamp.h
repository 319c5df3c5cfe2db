#pragma once

#include <cstdint>

namespace vt {

/// What a folder is known again by: while none of it changes, the names in it are the same.
/// Nanoseconds since 1970.
struct FolderStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t modified = 0;
  std::int64_t attributesChanged = 0;

  bool operator==(const FolderStamp&) const = default;
};

}  // namespace vt
