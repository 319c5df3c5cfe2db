#pragma once

#include <optional>
#include <string_view>

#include "foundation/Date.h"

namespace vt {

/// The instant that documents write as "2024-03-01T12:30:00Z", with any offset, a fraction of a
/// second, and any of it from the day or the time on left out; without an offset it is UTC. Nothing
/// for anything else.
std::optional<Date> dateInIsoText(std::string_view text);

/// The instant of a date and time of day in the Gregorian calendar, in UTC. Nothing when there is
/// no such day or time.
std::optional<Date> dateOf(int year, int month, int day, int hour, int minute, int second);

}  // namespace vt
