#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "foundation/Value.h"

namespace vt::query {

/// Length of the number at the start of `text`: a sign or none, digits, a point and digits or none,
/// an exponent or none. 0 when there is none.
std::size_t lengthOfNumber(std::string_view text);

/// The number that the whole text is: an integer where it is one that 64 bits hold, else a real.
/// None when it is not a number or too large for a real.
std::optional<Value> parseNumber(std::string_view text);

}  // namespace vt::query
