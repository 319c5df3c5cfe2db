#pragma once

#include "images/worker/Decoder.h"

namespace vt::worker {

/// A frame from the first tenth of the video.
std::optional<Image> decodeVideo(const DecodeJob& job);

}  // namespace vt::worker
