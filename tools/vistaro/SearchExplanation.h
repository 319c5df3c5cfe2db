#pragma once

#include "vistaro/SearchOptions.h"

namespace vt::tool {

/// Prints how a search is understood and answered, and of each hit that the user does not get to
/// see, why. Gives the exit code of the search. Throws CommandError for anybody but root: what is
/// told are files that the user may not know of.
int explainSearch(const SearchOptions& options);

}  // namespace vt::tool
