#include "metadata/live/TextDecoding.h"

#include <cstdint>

#include "foundation/UTF8.h"

namespace vt {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

std::string fromUtf16(std::string_view bytes, bool isBigEndian) {
  const auto unitAt = [&](std::size_t at) -> char32_t {
    const auto first = static_cast<std::uint8_t>(bytes[at]);
    const auto second = static_cast<std::uint8_t>(bytes[at + 1]);
    return isBigEndian ? first << 8 | second : second << 8 | first;
  };
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const char32_t unit = unitAt(at);
    if (unit < 0xD800 || unit > 0xDFFF) {
      appendCodePoint(text, unit);
      continue;
    }
    if (at + 3 >= bytes.size() && unit < 0xDC00) break;  // cut within a pair
    const char32_t low = at + 3 < bytes.size() ? unitAt(at + 2) : 0;
    if (unit < 0xDC00 && low >= 0xDC00 && low <= 0xDFFF) {
      appendCodePoint(text, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
      at += 2;
    } else {
      appendCodePoint(text, kReplacementCharacter);
    }
  }
  return text;
}

std::string fromLatin1(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char byte : bytes) appendCodePoint(text, static_cast<std::uint8_t>(byte));
  return text;
}

/// Whether `bytes` is the start of a character and no more.
bool isCutCharacter(std::string_view bytes) {
  if (bytes.empty() || bytes.size() > 3) return false;
  const auto lead = static_cast<std::uint8_t>(bytes.front());
  const std::size_t length = lead >= 0xF0 && lead <= 0xF4 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() >= length) return false;
  for (const char byte : bytes.substr(1)) {
    if ((static_cast<std::uint8_t>(byte) & 0xC0) != 0x80) return false;
  }
  return true;
}

}  // namespace

std::string decodePlainText(std::string_view bytes) {
  if (bytes.starts_with(kLittleEndianMark)) {
    return fromUtf16(bytes.substr(2), /*isBigEndian=*/false);
  }
  if (bytes.starts_with(kBigEndianMark)) return fromUtf16(bytes.substr(2), /*isBigEndian=*/true);
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  const std::size_t end = validUTF8Length(bytes);
  if (end == bytes.size() || isCutCharacter(bytes.substr(end))) {
    return std::string(bytes.substr(0, end));
  }
  return fromLatin1(bytes);
}

}  // namespace vt
