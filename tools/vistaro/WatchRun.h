#pragma once

#include <string>

#include "vistaro/IndexOptions.h"

namespace vt::tool {

/// Crawls into the index at `indexFolder`, and then publishes what changes as soon as it does,
/// until a signal ends it. Gives the exit code; throws CommandError for what cannot be.
int runWatcher(const IndexOptions& options, const std::string& indexFolder);

}  // namespace vt::tool
