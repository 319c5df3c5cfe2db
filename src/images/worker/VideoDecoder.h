#pragma once

#include "images/worker/Decoder.h"

namespace vt::worker {

/// A frame from the first tenth of the video. In a module of its own, since the libraries that it
/// needs take longer to load than all others together.
std::optional<Image> decodeVideo(const DecodeJob& job);

}  // namespace vt::worker

/// What the module hands out: decodeVideo().
extern "C" vt::worker::Decode vtVideoDecoder();
