#pragma once

#include <ctime>
#include <optional>

#include "foundation/Date.h"

namespace vt::tool {

/// The date in the time zone of this process, to the second; nothing when it lies too far away.
std::optional<std::tm> localTime(Date date);

}  // namespace vt::tool
