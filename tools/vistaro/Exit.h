#pragma once

namespace vt::tool {

/// Exit codes of `vistaro`, the same for every command.
enum Exit : int {
  kFound = 0,         ///< done; a search found something
  kNothingFound = 1,  ///< a search, or a look-up by name, found nothing
  kUsage = 2,         ///< a rejected query, or options that make no sense
  kFailure = 3,       ///< the system did not let it happen
};

}  // namespace vt::tool
