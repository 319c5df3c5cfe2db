#include "foundation/Utf8.h"

#include <utf8proc.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace vt {

Utf8Character utf8CharacterAt(std::string_view text, std::size_t offset) {
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + offset;
  if (*bytes < 0x80) return {*bytes, 1, true};
  utf8proc_int32_t codePoint = -1;
  const utf8proc_ssize_t length =
      utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size() - offset), &codePoint);
  if (length <= 0) return {};
  return {static_cast<char32_t>(codePoint), static_cast<std::size_t>(length), true};
}

void appendUtf8(char32_t codePoint, std::string& out) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
    return;
  }
  std::array<utf8proc_uint8_t, 4> bytes;
  const utf8proc_ssize_t length =
      utf8proc_encode_char(static_cast<utf8proc_int32_t>(codePoint), bytes.data());
  out.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(length));
}

bool isAscii(std::string_view text) {
  const char* at = text.data();
  std::size_t left = text.size();
  for (; left >= 8; at += 8, left -= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof word);
    if ((word & 0x8080808080808080U) != 0) return false;
  }
  for (; left > 0; ++at, --left) {
    if ((static_cast<unsigned char>(*at) & 0x80U) != 0) return false;
  }
  return true;
}

}  // namespace vt
