#pragma once

#include <memory>
#include <optional>
#include <string>

#include "foundation/FunctionRef.h"
#include "foundation/ObjectArray.h"

namespace vt {

class VTSearchFolder;

/// The address with the fewest characters of those that `addressIn` finds for the folders, asked in
/// order; the earliest among equals. Nil when it finds none, and for no folders at all.
std::optional<std::string> shortestAddress(
    const std::shared_ptr<ObjectArray<VTSearchFolder>>& folders,
    FunctionRef<std::optional<std::string>(const VTSearchFolder&)> addressIn);

}  // namespace vt
