#pragma once

#include <filesystem>
#include <string>

namespace vt::tool {

/// The absolute path of a folder, its links resolved. Throws CommandError (usage) when it is
/// missing, no folder, or cannot be reached.
std::filesystem::path canonicalFolder(const std::string& path);

}  // namespace vt::tool
