#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_set>

namespace vt {

/// Which files no picture could be made of, until they change. Forgets them all once there are
/// kMost, so that it stays small.
class FailedFiles {
 public:
  static constexpr std::size_t kMost = 10'000;

  /// Whether the file failed as it is now: by device, inode, modification and size.
  bool contains(const struct stat& status) const { return files_.contains(keyOf(status)); }
  void add(const struct stat& status) {
    if (files_.size() >= kMost) files_.clear();
    files_.insert(keyOf(status));
  }

 private:
  struct Key {
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t seconds;
    std::int64_t nanoseconds;
    std::int64_t size;

    friend bool operator==(const Key&, const Key&) = default;
  };
  struct Hash {
    std::size_t operator()(const Key& key) const {
      // Inodes alone tell nearly all files apart.
      return std::hash<std::uint64_t>{}(key.inode ^ key.device << 32);
    }
  };
  static Key keyOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec,
            status.st_size};
  }

  std::unordered_set<Key, Hash> files_;
};

}  // namespace vt
