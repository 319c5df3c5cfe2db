#pragma once

#include <nlohmann/json.hpp>

#include "foundation/Value.h"

namespace vt::tool {

/// A property-list value as JSON: dates as text in UTC to the second, data as Base64, text that is
/// no UTF-8 with U+FFFD, and null for an object.
nlohmann::ordered_json jsonOf(const Value& value);

}  // namespace vt::tool
