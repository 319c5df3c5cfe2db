#pragma once

#include <optional>

#include "metadata/store/StoreError.h"

namespace vt {

class Segment;

/// Reads all of a segment: checksums, numbers, texts, folding, order, and that nothing in it
/// contradicts the rest, as far as that can be said of a delta without its base. Nothing when all
/// is well; else the first that is wrong. Under a second for a million rows.
std::optional<StoreError> verifySegment(const Segment& segment);

}  // namespace vt
