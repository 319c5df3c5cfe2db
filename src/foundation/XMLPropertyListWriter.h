#pragma once

#include <string>

#include "foundation/PropertyListError.h"
#include "foundation/PropertyListLimits.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vt {

/// The tree as an XML property list in UTF-8: header, tabs, keys in the order of the dictionary.
///
/// What is written reads back equal, save for the parts of a second in dates, which are cut. What
/// the readers would refuse is refused here: null and objects (kUnsupported), text that is not
/// UTF-8 or holds a character that XML cannot (kInvalidText), a date outside the years 1 to 9999
/// (kInvalidValue), more depth, bytes or values than the limits, and so any cycle. The error's text
/// names the place by its keys and indexes. Containers found in several places are written in each.
Result<std::string, PropertyListError> writeXMLPropertyList(const Value& root,
                                                            const PropertyListLimits& limits = {});

}  // namespace vt
