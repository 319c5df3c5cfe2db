#include "foundation/TextDecoding.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/EncodingGuess.h"
#include "foundation/TextConversion.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

using namespace std::string_view_literals;

enum class Order { kLittleEndian, kBigEndian };

/// Code units of two or four bytes.
struct WideForm {
  std::size_t unitSize;
  Order order;
};

constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

char32_t unitAt(std::string_view bytes, std::size_t at, WideForm form) {
  char32_t unit = 0;
  for (std::size_t i = 0; i < form.unitSize; ++i) {
    const std::size_t place = form.order == Order::kBigEndian ? i : form.unitSize - 1 - i;
    unit = unit << 8 | static_cast<std::uint8_t>(bytes[at + place]);
  }
  return unit;
}

std::string fromUtf16(std::string_view bytes, Order order) {
  const WideForm form{2, order};
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const char32_t unit = unitAt(bytes, at, form);
    if (!isHighSurrogate(unit) && !isLowSurrogate(unit)) {
      appendCodePoint(text, unit);
      continue;
    }
    const bool isLast = at + 3 >= bytes.size();
    if (isLast && isHighSurrogate(unit)) break;  // cut within a pair
    const char32_t low = isLast ? 0 : unitAt(bytes, at + 2, form);
    if (isHighSurrogate(unit) && isLowSurrogate(low)) {
      appendCodePoint(text, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
      at += 2;
    } else {
      appendCodePoint(text, kReplacementCharacter);
    }
  }
  return text;
}

std::string fromUtf32(std::string_view bytes, Order order) {
  std::string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t at = 0; at + 3 < bytes.size(); at += 4) {
    const char32_t unit = unitAt(bytes, at, {4, order});
    const bool isCharacter =
        unit <= kLastCodePoint && !isHighSurrogate(unit) && !isLowSurrogate(unit);
    appendCodePoint(text, isCharacter ? unit : kReplacementCharacter);
  }
  return text;
}

std::string fromWide(std::string_view bytes, WideForm form) {
  return form.unitSize == 2 ? fromUtf16(bytes, form.order) : fromUtf32(bytes, form.order);
}

struct Mark {
  std::string_view bytes;
  WideForm form;
};
// The longer first, as one of UTF-16 is the beginning of one of UTF-32.
constexpr std::array<Mark, 4> kMarks = {{
    {"\xFF\xFE\0\0"sv, {4, Order::kLittleEndian}},
    {"\0\0\xFE\xFF"sv, {4, Order::kBigEndian}},
    {"\xFF\xFE"sv, {2, Order::kLittleEndian}},
    {"\xFE\xFF"sv, {2, Order::kBigEndian}},
}};
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// What zeros show text without a mark to be, if most of its characters are those of Latin-1;
/// nothing where the zeros may be a text's own.
std::optional<WideForm> wideFormOf(std::string_view bytes) {
  bytes = bytes.substr(0, 4096);
  std::array<std::size_t, 4> zeros{};  // by place in four bytes
  for (std::size_t i = 0; i < bytes.size(); ++i) zeros[i % 4] += bytes[i] == '\0' ? 1 : 0;
  const std::size_t quads = bytes.size() / 4;
  // No character takes more than 21 bits, and hardly any more than 16.
  if (zeros[3] == quads && zeros[2] > quads / 2) return WideForm{4, Order::kLittleEndian};
  if (zeros[0] >= quads && zeros[1] > quads / 2) return WideForm{4, Order::kBigEndian};
  const std::size_t even = zeros[0] + zeros[2];
  const std::size_t odd = zeros[1] + zeros[3];
  if (even == 0 && odd > quads) return WideForm{2, Order::kLittleEndian};
  if (odd == 0 && even > quads) return WideForm{2, Order::kBigEndian};
  return std::nullopt;
}

/// Windows-1252. The few bytes that it leaves open are the control characters of Latin-1.
std::string fromWestern(std::string_view bytes) {
  static constexpr std::array<char16_t, 32> kFrom0x80 = {
      0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
      0x2039, 0x152,  0x8D,   0x17D,  0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178};
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char each : bytes) {
    const auto byte = static_cast<std::uint8_t>(each);
    const bool isOther = byte >= 0x80 && byte < 0xA0;
    appendCodePoint(text, isOther ? kFrom0x80[byte - 0x80] : byte);
  }
  return text;
}

/// In the character set that is likely; nothing when none is, or when nobody knows it.
std::optional<std::string> fromGuessedCharset(std::string_view bytes) {
  const char* const charset = guessedCharset(bytes);
  if (!charset) return std::nullopt;
  const TextConversion conversion(charset);
  return conversion ? std::optional(conversion.convert(bytes)) : std::nullopt;
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

/// Whether sequences of ISO 2022 may switch to other characters, all of them of ASCII's bytes.
bool mayHaveShifts(std::string_view bytes) { return bytes.find("\x1B$") != std::string_view::npos; }

}  // namespace

std::string decodePlainText(std::string_view bytes) {
  for (const Mark& mark : kMarks) {
    if (bytes.starts_with(mark.bytes)) return fromWide(bytes.substr(mark.bytes.size()), mark.form);
  }
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  if (const std::optional<WideForm> form = wideFormOf(bytes)) return fromWide(bytes, *form);
  const std::size_t end = validUTF8Length(bytes);
  const bool isUtf8 = end == bytes.size() || isCutCharacter(bytes.substr(end));
  if (!isUtf8 || mayHaveShifts(bytes)) {
    if (std::optional<std::string> text = fromGuessedCharset(bytes)) return *std::move(text);
  }
  return isUtf8 ? std::string(bytes.substr(0, end)) : fromWestern(bytes);
}

}  // namespace vt
