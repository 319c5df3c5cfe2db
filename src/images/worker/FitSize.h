#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vt::worker {

/// A width and a height in whole pixels.
struct PixelSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// The largest size of the proportions `width` to `height`, which are above 0, that fits into
/// `most`. Neither side falls below 1.
inline PixelSize fitInto(PixelSize most, double width, double height) {
  const double scale = std::min(most.width / width, most.height / height);
  const auto fit = [&](double length, std::uint32_t longest) {
    return static_cast<std::uint32_t>(
        std::clamp(std::round(length * scale), 1.0, static_cast<double>(longest)));
  };
  return {fit(width, most.width), fit(height, most.height)};
}

}  // namespace vt::worker
