#pragma once

#include <string>
#include <string_view>

namespace vt {

/// Where things are of the checkout and the build that a test belongs to, known to one source
/// alone: the others compile to the same in every checkout, so that a compiler cache knows them.

/// The folder of what is shipped beside the programs: content types, attributes, icons.
std::string resourceFolder();

/// A file of `resourceFolder()`.
std::string resourcePath(std::string_view name);

/// The folder of files that tests read.
std::string testDataFolder();

/// A program of this build that is installed: "vistaro".
std::string builtProgram(std::string_view name);

/// A program of this build that only tests start: "hostile_worker".
std::string testProgram(std::string_view name);

}  // namespace vt
