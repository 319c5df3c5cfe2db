#pragma once

#include <optional>
#include <string>

#include "foundation/Value.h"

namespace vt {

/// A string, or a number as people write it; nil for nil and for what has no plain text.
std::optional<std::string> textOf(const std::optional<Value>& value);

}  // namespace vt
