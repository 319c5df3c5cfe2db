#pragma once

#include <optional>
#include <string_view>

#include "foundation/Date.h"

namespace vt {

/// The instant that a date in a file means: digits of year, month, day, and perhaps hour, minute
/// and second with a fraction, with anything that is no digit between them, as EXIF
/// ("2024:05:01 10:20:30"), ISO 8601 ("2024-05-01T10:20:30.5+02:00") and IPTC ("20240501") write
/// it. A zone at the end is "Z" or an offset; without one it is the time zone of this process.
/// Nothing when it is none, is only a year or month, or its fields are out of range: cameras
/// without a clock write zeros.
std::optional<Date> dateOfWritten(std::string_view written);

/// The year at the beginning, of four digits and not 0.
std::optional<int> yearOfWritten(std::string_view written);

}  // namespace vt
