#pragma once

#include <optional>
#include <string>

#include "images/worker/ImageRequest.h"
#include "platform/Image.h"

namespace vt {

/// The picture in the bytes that a decoder sent, which may be anything: a PictureHeader and pixels.
/// Nothing when a side is longer than was asked for, or there are not as many pixels as it says.
std::optional<Image> pictureIn(std::string&& bytes, const worker::ImageRequest& request);

}  // namespace vt
