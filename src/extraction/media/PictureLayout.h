#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vt {

/// How the pixels of a picture are stored, as the head of its file says.
struct PictureLayout {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bitsPerSample = 0;
  std::string_view colorSpace;   ///< "RGB", "Gray" or "CMYK"
  std::optional<bool> hasAlpha;  ///< nothing where a palette, or a later part, tells it
};

/// Of a PNG, JPEG or GIF file; nothing of any other, and of one whose head is cut off. Looks at no
/// pixels.
std::optional<PictureLayout> pictureLayoutOf(std::string_view file);

/// What an ICC profile says.
struct ColorProfile {
  std::string name;             ///< as UTF-8; "" when it has none
  std::string_view colorSpace;  ///< "RGB", "Gray", "CMYK" or "Lab"; "" for others
};

ColorProfile colorProfileOf(std::string_view profile);

}  // namespace vt
