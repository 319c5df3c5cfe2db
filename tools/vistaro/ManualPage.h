#pragma once

#include <string>

#include "vistaro/CommandOutline.h"

namespace vt::tool {

/// The manual page of the program, in section 8, as text for `man`.
std::string manualPage(const CommandOutline& program, const std::string& version);

}  // namespace vt::tool
