#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "metadata/live/Descriptor.h"

namespace vt {

/// Opens folders by their absolute paths, as they stand at that moment.
///
/// A path is found anew from the root for each folder, and no step of it may be a link. So a folder
/// that was moved, or swapped for a link, while its tree is walked is simply not there any more:
/// nothing can lead the walk out of the place that it believes to be in. Length and depth are not
/// bounded, and two descriptors are all that is held. One thread at a time.
class FolderOpener {
 public:
  FolderOpener();

  /// Opens the folder for listing, without moving its access time where that may be asked. `path`
  /// has names only: no ".", "..", doubled or trailing slash. Closed when it is not there, is no
  /// folder, or may not be listed or reached; see errno.
  Descriptor open(std::string_view path);
  /// The same with O_PATH: it names the folder and disturbs nothing, not even an automounter.
  Descriptor find(std::string_view path);

 private:
  Descriptor open(std::string_view path, int flags);
  int anchorFor(std::string_view path);

  Descriptor root_;
  // A path longer than the system takes is reached by way of a folder on it, kept for the next.
  Descriptor anchor_;
  std::string anchorPath_;
  int anchorUses_ = 0;
};

/// Opens the folder at `path`, relative and not empty, below the open folder `from`, no step of it
/// a link; `flags` go with those for a folder. `path` is shorter than the system's longest.
Descriptor openFolderBelow(int from, const char* path, int flags);

/// The same step by step, for kernels and filters of system calls that know no other way.
Descriptor openFolderByNames(int from, const char* path, int flags);

}  // namespace vt
