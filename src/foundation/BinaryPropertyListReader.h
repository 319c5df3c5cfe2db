#pragma once

#include <string_view>

#include "foundation/PropertyListError.h"
#include "foundation/PropertyListLimits.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vt {

/// Reads a binary property list, version 00. Every offset and count is checked before use. An
/// object that is referred to from several places becomes a value of its own in each, within the
/// limit on values; one that contains itself is an error (kTooDeep), and so are null, UIDs, sets
/// and lone surrogates. docs/property-list.md has the rest.
Result<Value, PropertyListError> readBinaryPropertyList(std::string_view bytes,
                                                        const PropertyListLimits& limits = {});

}  // namespace vt
