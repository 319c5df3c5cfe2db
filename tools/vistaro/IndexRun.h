#pragma once

#include <string>

#include "vistaro/IndexOptions.h"

namespace vt::tool {

/// Crawls and publishes into the index at `indexFolder`: once, or again and again until a signal
/// ends it. Gives the exit code; throws CommandError for what cannot be.
int runIndexer(const IndexOptions& options, const std::string& indexFolder);

}  // namespace vt::tool
