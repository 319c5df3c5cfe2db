#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/Date.h"
#include "foundation/Value.h"

namespace vt {

// Numbers and dates as XML property lists spell them. White space around them is passed over;
// anything else that does not belong makes the reading nothing.

/// A decimal integer with an optional sign, or "0x" and hexadecimal digits, from -2^63 to 2^64-1:
/// signed if it fits, else unsigned. Nothing when it is none or lies outside.
std::optional<Value> parsePropertyListInteger(std::string_view text);

/// A decimal real, or "inf", "infinity", "nan" in any case, with an optional sign. Nothing when it
/// is none, or lies outside what a double holds.
std::optional<double> parsePropertyListReal(std::string_view text);

/// The shortest text that reads back as `real`; "+infinity", "-infinity", "nan".
void appendPropertyListReal(std::string& text, double real);

/// YYYY-MM-DDThh:mm:ssZ, a day that exists, the years 0001 to 9999; no leap seconds.
std::optional<Date> parsePropertyListDate(std::string_view text);

/// Appends the date to the second, cut towards the past. False, and nothing appended, when its year
/// is not one of 1 to 9999.
bool appendPropertyListDate(std::string& text, Date date);

}  // namespace vt
