#pragma once

#include <string>

#include "metadata/indexing/Indexer.h"

namespace vt::tool {

/// How far the indexer has come, in a line for people: counts, rate, and the time that is left
/// where an earlier generation tells how much there will be.
std::string indexingLine(const IndexingProgress& progress);

}  // namespace vt::tool
