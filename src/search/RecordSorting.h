#pragma once

#include <memory>
#include <string_view>

#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"

namespace vt {

/// A new list of the same records, sorted by the value under `attribute`.
///
/// When the first record's value is a string, strings go by the process's language without regard
/// to case, else by their natural order. Absent values come first ascending and last descending,
/// values of unlike type by the rank of their type; records that compare equal, as all arrays do,
/// keep their order in either direction.
std::shared_ptr<ObjectArray<Dictionary>> sortedRecords(const ObjectArray<Dictionary>& records,
                                                       std::string_view attribute, bool descending);

}  // namespace vt
