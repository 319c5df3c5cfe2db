#pragma once

#include <cstdint>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/query/Query.h"

namespace vt::query {

/// The children of each node of the query, by node, in the order in which they are best asked: the
/// cheapest first, equally dear ones as they were written. A node costs what all terms below it do.
std::vector<std::vector<std::uint32_t>> childrenByCost(
    const Query& query, FunctionRef<std::uint64_t(const Term&)> costOf);

}  // namespace vt::query
