#pragma once

#include <optional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// The picture of itself that a ZIP archive holds, by the names that makers of documents give it.
std::optional<Image> decodePackage(const DecodeJob& job);

}  // namespace vt::worker
