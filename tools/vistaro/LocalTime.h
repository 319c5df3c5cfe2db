#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "foundation/Date.h"

namespace vt::tool {

/// The date in the time zone of this process, to the second; nothing when it lies too far away.
std::optional<std::tm> localTime(Date date);

/// That for people: "2026-11-21 09:30:00"; "" where there is none.
std::string localTimeText(Date date);

/// The date for programs, in UTC and to the second: "2026-11-21T08:30:00Z".
std::string instantText(Date date);

}  // namespace vt::tool
