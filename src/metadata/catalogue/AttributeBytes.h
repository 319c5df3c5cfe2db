#pragma once

#include <string>
#include <string_view>

#include "foundation/Value.h"

namespace vt {

/// The value of an attribute as a catalogue keeps it; docs/catalogue.md has the form. "" for what
/// no attribute can be: null, data, a dictionary, an array with one of those in it or without
/// elements.
std::string attributeBytes(const Value& value);

/// The value that the bytes are of; null for any that attributeBytes() does not give.
Value attributeValue(std::string_view bytes);

}  // namespace vt
