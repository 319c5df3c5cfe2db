#pragma once

#include <cstdint>
#include <string>

namespace vt::tool {

/// What people call the walls, as of worker::Wall: "bubblewrap, Landlock, seccomp".
std::string wallNames(std::uint32_t walls);

}  // namespace vt::tool
