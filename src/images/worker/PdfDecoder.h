#pragma once

#include <optional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// The first page on white, as large as fits. Nothing for a document that wants a password.
std::optional<Image> decodePdf(const DecodeJob& job);

}  // namespace vt::worker
