#pragma once

#include <string>

namespace vt::tool {

/// Prints what the index at `indexFolder` holds and how fresh it is. Gives the exit code: found if
/// a search would use it, nothing found if it is missing or too old, failure if it can't be read.
int reportIndex(const std::string& indexFolder, bool asJson);

/// Reads all of the index and says whether it is what was written. Throws CommandError when not.
int verifyIndex(const std::string& indexFolder);

}  // namespace vt::tool
