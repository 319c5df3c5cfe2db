#pragma once

#include <string_view>

#include "foundation/PropertyListError.h"
#include "foundation/PropertyListLimits.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vt {

/// Reads an old-style (text) property list, or a strings file, which is a dictionary without its
/// braces. UTF-8, or UTF-16 with a byte order mark. Every leaf is a string or data. A key that
/// occurs twice keeps its first place and gets its last value. Text of comments alone is an empty
/// dictionary; no text, or blanks alone, are an error (kTruncated). docs/property-list.md has the
/// grammar.
Result<Value, PropertyListError> readOldStylePropertyList(std::string_view bytes,
                                                          const PropertyListLimits& limits = {});

}  // namespace vt
