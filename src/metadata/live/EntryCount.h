#pragma once

#include <cstdint>
#include <optional>

#include "metadata/rights/AccessJudge.h"

namespace vt {

/// How many entries the folder `name` (ended by NUL) of the open folder `folder` has; nothing when
/// it is no folder or the judged account may not list it. Costs a listing.
std::optional<std::uint64_t> countEntries(int folder, const char* name, const AccessJudge& judge);

}  // namespace vt
