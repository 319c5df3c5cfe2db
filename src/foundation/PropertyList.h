#pragma once

#include <string_view>

#include "foundation/PropertyListError.h"
#include "foundation/PropertyListLimits.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vt {

/// Reads a property list of any of the three formats, which it tells apart by how `bytes` begin:
/// "bplist" is the binary one; "<" that does not open a run of hexadecimal data is XML, in whatever
/// encoding; anything else is old-style text. The tree that comes back is the caller's alone: no
/// container is found in it twice. No bytes, or blanks alone, are an error (kTruncated).
Result<Value, PropertyListError> readPropertyList(std::string_view bytes,
                                                  const PropertyListLimits& limits = {});

}  // namespace vt
