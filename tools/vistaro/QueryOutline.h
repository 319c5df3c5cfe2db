#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "metadata/query/Query.h"

namespace vt::tool {

/// A line of a query that is shown as a tree.
struct OutlineLine {
  std::size_t depth = 0;
  std::string text;  ///< a term, or what joins those below: "&&", "||", "!"
};

/// The query as it was understood: each term on a line of its own below what joins it.
std::vector<OutlineLine> outlineOf(const query::Query& query);

}  // namespace vt::tool
