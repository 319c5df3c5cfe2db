#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "metadata/watch/ChangeCollector.h"

namespace vt {

/// Numbers for folders that are known by the bytes of their handles, and what is known of where
/// they lie.
class FolderHandles {
 public:
  enum class Place : std::uint8_t {
    kUnknown,
    kInside,   ///< of what is watched, or perhaps
    kOutside,  ///< or gone
  };

  /// The number of a folder, a new one for a folder that has none.
  WatchedFolder numberOf(std::string_view handle);
  /// The bytes; good until clear().
  std::string_view handleOf(WatchedFolder folder) const { return *handles_[folder].bytes; }

  /// What setPlace() was told since the last forgetPlaces().
  Place placeOf(WatchedFolder folder) const {
    const Handle& handle = handles_[folder];
    return handle.placedSince == placedSince_ ? handle.place : Place::kUnknown;
  }
  void setPlace(WatchedFolder folder, Place place) {
    handles_[folder].place = place;
    handles_[folder].placedSince = placedSince_;
  }
  /// Folders may have come to lie elsewhere.
  void forgetPlaces() { ++placedSince_; }

  std::size_t size() const { return handles_.size(); }
  /// Takes all numbers back.
  void clear();

 private:
  struct Handle {
    const std::string* bytes;
    Place place = Place::kUnknown;
    std::uint64_t placedSince = 0;
  };

  std::unordered_map<std::string, WatchedFolder> numbers_;
  std::vector<Handle> handles_;
  std::uint64_t placedSince_ = 1;
};

}  // namespace vt
