#pragma once

#include <optional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// The drawing, as large as fits. What it refers to outside itself is not loaded.
std::optional<Image> decodeSvg(const DecodeJob& job);

}  // namespace vt::worker
