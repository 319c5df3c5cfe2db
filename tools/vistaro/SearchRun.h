#pragma once

#include "vistaro/SearchOptions.h"

namespace vt::tool {

/// Searches, prints the report and the notes, and gives the exit code.
int runSearch(const SearchOptions& options);

}  // namespace vt::tool
