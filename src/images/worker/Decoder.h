#pragma once

#include <cstdint>
#include <optional>

#include "images/ImageFormat.h"
#include "platform/Image.h"

namespace vt::worker {

/// One file to make a picture of.
struct DecodeJob {
  int descriptor = -1;  ///< open for reading, at its start; borrowed
  ImageFormat format = ImageFormat::kPixels;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool iconMode = false;
};

/// Makes the picture, which fits into the job's size. Nothing when the file is not of the format,
/// is damaged beyond use, or has no picture.
using Decode = std::optional<Image> (*)(const DecodeJob& job);

}  // namespace vt::worker
