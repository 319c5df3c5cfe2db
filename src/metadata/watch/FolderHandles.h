#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "metadata/watch/ChangeCollector.h"

namespace vt {

/// Numbers for folders that are known by the bytes of their handles, and which of them need not be
/// looked at.
class FolderHandles {
 public:
  /// The number of a folder, a new one for a folder that has none.
  WatchedFolder numberOf(std::string_view handle);
  /// The bytes; good until clear().
  std::string_view handleOf(WatchedFolder folder) const { return *handles_[folder].bytes; }

  /// Whether setOutside() was told of it since the last forgetOutside().
  bool isOutside(WatchedFolder folder) const {
    return handles_[folder].outsideSince == outsideSince_;
  }
  void setOutside(WatchedFolder folder) { handles_[folder].outsideSince = outsideSince_; }
  /// Folders may have come to lie elsewhere.
  void forgetOutside() { ++outsideSince_; }

  std::size_t size() const { return handles_.size(); }
  /// Takes all numbers back.
  void clear();

 private:
  struct Handle {
    const std::string* bytes;
    std::uint64_t outsideSince;
  };

  std::unordered_map<std::string, WatchedFolder> numbers_;
  std::vector<Handle> handles_;
  std::uint64_t outsideSince_ = 1;
};

}  // namespace vt
