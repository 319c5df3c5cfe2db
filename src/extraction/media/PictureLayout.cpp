#include "extraction/media/PictureLayout.h"

#include <algorithm>

#include "foundation/UTF16.h"

namespace vt {
namespace {

std::uint32_t byteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<std::uint8_t>(bytes[at]) : 0;
}

std::uint32_t bigEndian16(std::string_view bytes, std::size_t at) {
  return byteAt(bytes, at) << 8 | byteAt(bytes, at + 1);
}

std::uint32_t bigEndian32(std::string_view bytes, std::size_t at) {
  return bigEndian16(bytes, at) << 16 | bigEndian16(bytes, at + 2);
}

std::uint32_t littleEndian16(std::string_view bytes, std::size_t at) {
  return byteAt(bytes, at) | byteAt(bytes, at + 1) << 8;
}

std::optional<PictureLayout> pngLayout(std::string_view file) {
  constexpr std::size_t kHeadSize = 33;  // signature and the chunk IHDR
  if (file.size() < kHeadSize || file.substr(12, 4) != "IHDR") return std::nullopt;
  const std::uint32_t colour = byteAt(file, 25);
  constexpr std::uint32_t kPalette = 3;
  constexpr std::uint32_t kAlpha = 4;
  std::optional<bool> hasAlpha;
  if (colour != kPalette) hasAlpha = (colour & kAlpha) != 0;
  return PictureLayout{.width = bigEndian32(file, 16),
                       .height = bigEndian32(file, 20),
                       .bitsPerSample = colour == kPalette ? 8 : byteAt(file, 24),
                       .colorSpace = (colour & 2) != 0 ? "RGB" : "Gray",
                       .hasAlpha = hasAlpha};
}

std::string_view jpegColorSpace(std::uint32_t components) {
  if (components == 1) return "Gray";
  return components == 4 ? "CMYK" : "RGB";
}

/// Whether the marker begins a frame, of whatever process of coding.
bool isStartOfFrame(std::uint32_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

std::optional<PictureLayout> jpegLayout(std::string_view file) {
  std::size_t at = 2;
  while (at + 9 < file.size() && byteAt(file, at) == 0xFF) {
    const std::uint32_t marker = byteAt(file, at + 1);
    if (marker == 0xFF) {  // filling
      ++at;
      continue;
    }
    if (isStartOfFrame(marker)) {
      return PictureLayout{.width = bigEndian16(file, at + 7),
                           .height = bigEndian16(file, at + 5),
                           .bitsPerSample = byteAt(file, at + 4),
                           .colorSpace = jpegColorSpace(byteAt(file, at + 9)),
                           .hasAlpha = false};
    }
    at += 2 + bigEndian16(file, at + 2);
  }
  return std::nullopt;
}

std::optional<PictureLayout> gifLayout(std::string_view file) {
  if (file.size() < 13) return std::nullopt;
  return PictureLayout{.width = littleEndian16(file, 6),
                       .height = littleEndian16(file, 8),
                       .bitsPerSample = 8,
                       .colorSpace = "RGB",
                       .hasAlpha = std::nullopt};
}

std::string_view colorSpaceOf(std::string_view signature) {
  if (signature == "RGB ") return "RGB";
  if (signature == "GRAY") return "Gray";
  if (signature == "CMYK") return "CMYK";
  return signature == "Lab " ? "Lab" : "";
}

/// The text in an element of the types "desc" (version 2: ASCII) and "mluc" (version 4: several
/// languages, of which the first counts).
std::string textOfElement(std::string_view element) {
  if (element.starts_with("desc")) {
    return std::string(element.substr(0, 12 + std::size_t{bigEndian32(element, 8)})
                           .substr(std::min<std::size_t>(element.size(), 12)));
  }
  if (!element.starts_with("mluc") || bigEndian32(element, 8) == 0) return "";
  const std::size_t length = bigEndian32(element, 20);
  const std::size_t offset = bigEndian32(element, 24);
  return offset < element.size()
             ? decodeUTF16(element.substr(offset, length), ByteOrder::kBigEndian).text
             : "";
}

}  // namespace

std::optional<PictureLayout> pictureLayoutOf(std::string_view file) {
  if (file.starts_with("\x89PNG\r\n\x1a\n")) return pngLayout(file);
  if (file.starts_with("\xff\xd8")) return jpegLayout(file);
  if (file.starts_with("GIF8")) return gifLayout(file);
  return std::nullopt;
}

ColorProfile colorProfileOf(std::string_view profile) {
  constexpr std::size_t kTable = 128;  // how long the head is
  constexpr std::size_t kEntrySize = 12;
  constexpr std::uint32_t kMostEntries = 100;
  ColorProfile found;
  if (profile.size() < kTable + 4) return found;
  found.colorSpace = colorSpaceOf(profile.substr(16, 4));
  const std::uint32_t entries = std::min(bigEndian32(profile, kTable), kMostEntries);
  for (std::uint32_t i = 0; i < entries; ++i) {
    const std::size_t entry = kTable + 4 + i * kEntrySize;
    if (entry + kEntrySize > profile.size()) break;
    if (profile.substr(entry, 4) != "desc") continue;
    const std::size_t offset = bigEndian32(profile, entry + 4);
    if (offset >= profile.size()) break;
    found.name = textOfElement(profile.substr(offset, bigEndian32(profile, entry + 8)));
    break;
  }
  return found;
}

}  // namespace vt
