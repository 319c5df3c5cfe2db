#pragma once

#include <string_view>

#include "foundation/PropertyListError.h"
#include "foundation/PropertyListLimits.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vt {

/// Reads an XML property list: UTF-8 with or without a byte order mark, UTF-16, ISO-8859-1 or
/// US-ASCII, as the document declares. Strict: whatever is not a property list is an error, no
/// value is guessed. A key that occurs twice keeps its first place and gets its last value.
/// Declared entities are refused, external ones never fetched. docs/property-list.md has the rest.
Result<Value, PropertyListError> readXMLPropertyList(std::string_view bytes,
                                                     const PropertyListLimits& limits = {});

}  // namespace vt
