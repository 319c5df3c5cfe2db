#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// What is to be watched: everything below some folders, but for some in them.
struct WatchScope {
  std::vector<std::string> roots;  ///< absolute and canonical, none in another
  /// Folders whose changes are passed over, such as that of the index: to tell of what writing it
  /// changes would make it be written again. Absolute and canonical.
  std::vector<std::string> ignored;

  /// Whether what changes at `path`, absolute and canonical, is to be told.
  bool holds(std::string_view path) const;
};

}  // namespace vt
