#pragma once

#include <memory>
#include <string>

#include "foundation/Result.h"
#include "metadata/watch/FileSystemWatch.h"
#include "metadata/watch/WatchScope.h"

namespace vt {

/// A watch that was started.
struct WatchChoice {
  std::unique_ptr<FileSystemWatch> watch;
  std::string why;  ///< in words: why it is this one and not a better one; "" for the best
};

/// Starts the best watch that this process may have of all in the scope: fanotify, else inotify.
/// An error, in words, when there is none.
Result<WatchChoice, std::string> startWatch(const WatchScope& scope, WatchInstant now);

}  // namespace vt
