#pragma once

#include <optional>

#include "metadata/store/StoreError.h"

namespace vt {

struct IndexGeneration;

/// Reads all of a generation: each of its segments (see verifySegment), and that they do not
/// contradict each other. Nothing when all is well; else the first that is wrong.
std::optional<StoreError> verifyGeneration(const IndexGeneration& generation);

}  // namespace vt
