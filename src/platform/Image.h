#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vt {

/// A picture of pixels.
struct Image {
  static constexpr std::size_t kBytesPerPixel = 4;

  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// Row by row from the top, each pixel as red, green, blue and alpha of 8 bits, in sRGB; the
  /// colours are not multiplied by alpha.
  std::string pixels = {};

  /// Whether there are pixels, and as many as the size says.
  bool isWhole() const {
    // Dividing, since the product of both sides need not fit.
    const std::size_t count = pixels.size() / kBytesPerPixel;
    return width > 0 && height > 0 && pixels.size() % kBytesPerPixel == 0 && count % width == 0 &&
           count / width == height;
  }

  friend bool operator==(const Image&, const Image&) = default;
};

}  // namespace vt
