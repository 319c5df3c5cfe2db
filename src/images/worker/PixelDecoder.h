#pragma once

#include <optional>
#include <string>

#include "images/worker/Decoder.h"
#include "images/worker/FitSize.h"

namespace vt::worker {

/// Loads the image library and no more of it than the formats of ImageFormat::kPixels need. To be
/// called once, before anything else of this file.
bool loadPixelDecoder();

/// The image in the file, turned upright and in sRGB.
std::optional<Image> decodePixels(const DecodeJob& job);

/// The image that the bytes hold, likewise.
std::optional<Image> decodePixelsIn(const std::string& bytes, PixelSize most);

}  // namespace vt::worker
