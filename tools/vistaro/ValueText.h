#pragma once

#include <string>

#include "foundation/Value.h"

namespace vt::tool {

/// A value for people, fit for one line of a terminal: dates in local time to the second, "yes" and
/// "no", the elements of an array parted by commas, and the number of bytes of data.
std::string textOf(const Value& value);

}  // namespace vt::tool
