#include "foundation/UTF8.h"

#include <cstdint>
#include <cstring>

namespace vt {
namespace {

struct LeadByte {
  std::size_t length;
  std::uint8_t secondMin;
  std::uint8_t secondMax;
};

// The well-formed sequences of the Unicode standard (table 3-7): only the second byte has a range
// that depends on the first. Length 0: no code point begins so.
LeadByte leadByte(std::uint8_t byte) {
  if (byte < 0x80) return {1, 0, 0};
  if (byte < 0xC2) return {0, 0, 0};
  if (byte < 0xE0) return {2, 0x80, 0xBF};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};  // less would be overlong
  if (byte == 0xED) return {3, 0x80, 0x9F};  // more would be a surrogate
  if (byte < 0xF0) return {3, 0x80, 0xBF};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte < 0xF4) return {4, 0x80, 0xBF};
  if (byte == 0xF4) return {4, 0x80, 0x8F};  // more would be past U+10FFFF
  return {0, 0, 0};
}

}  // namespace

DecodedCodePoint decodeCodePoint(std::string_view text) {
  const auto first = static_cast<std::uint8_t>(text.front());
  const LeadByte lead = leadByte(first);
  if (lead.length == 1) return {first, 1, true};
  if (lead.length == 0) return {kReplacementCharacter, 1, false};
  char32_t codePoint = first & (0x7F >> lead.length);
  for (std::size_t i = 1; i < lead.length; ++i) {
    const std::uint8_t least = i == 1 ? lead.secondMin : 0x80;
    const std::uint8_t most = i == 1 ? lead.secondMax : 0xBF;
    const auto byte = i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
    if (byte < least || byte > most) return {kReplacementCharacter, i, false};
    codePoint = codePoint << 6 | (byte & 0x3F);
  }
  return {codePoint, lead.length, true};
}

void appendCodePoint(std::string& text, char32_t codePoint) {
  if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint < 0xE000)) {
    codePoint = kReplacementCharacter;
  }
  const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (codePoint < 0x80) {
    append(codePoint);
  } else if (codePoint < 0x800) {
    append(0xC0 | codePoint >> 6);
    append(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    append(0xE0 | codePoint >> 12);
    append(0x80 | (codePoint >> 6 & 0x3F));
    append(0x80 | (codePoint & 0x3F));
  } else {
    append(0xF0 | codePoint >> 18);
    append(0x80 | (codePoint >> 12 & 0x3F));
    append(0x80 | (codePoint >> 6 & 0x3F));
    append(0x80 | (codePoint & 0x3F));
  }
}

std::size_t asciiLength(std::string_view text) {
  std::size_t i = 0;
  for (; i + sizeof(std::uint64_t) <= text.size(); i += sizeof(std::uint64_t)) {
    std::uint64_t eight;
    std::memcpy(&eight, text.data() + i, sizeof eight);
    if (eight & 0x8080808080808080U) break;
  }
  while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80) ++i;
  return i;
}

std::size_t validUTF8Length(std::string_view text) {
  std::size_t i = 0;
  while (true) {
    i += asciiLength(text.substr(i));
    if (i == text.size()) return i;
    const DecodedCodePoint decoded = decodeCodePoint(text.substr(i));
    if (!decoded.valid) return i;
    i += decoded.length;
  }
}

std::string displayText(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (true) {
    const std::size_t valid = validUTF8Length(text);
    shown.append(text.substr(0, valid));
    text.remove_prefix(valid);
    if (text.empty()) return shown;
    appendCodePoint(shown, kReplacementCharacter);
    text.remove_prefix(decodeCodePoint(text).length);
  }
}

}  // namespace vt
