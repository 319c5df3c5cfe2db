#pragma once

#include <optional>
#include <string>

#include "platform/Image.h"

namespace vt {

/// The image as a PNG file of 8 bits per channel: size, pixels, end, and no other chunk. Without an
/// alpha channel when every pixel is opaque. Nothing when the image is not whole or memory does not
/// suffice.
std::optional<std::string> encodePng(const Image& image);

}  // namespace vt
