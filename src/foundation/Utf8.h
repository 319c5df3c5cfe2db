#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vt {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct Utf8Character {
  char32_t codePoint = kReplacementCharacter;
  std::size_t length = 1;  ///< in bytes
  bool isValid = false;
};

/// The character at `offset`, which must be inside the text. A byte that begins no well-formed
/// sequence (overlong forms and surrogates are none) gives U+FFFD and length 1.
Utf8Character utf8CharacterAt(std::string_view text, std::size_t offset);

/// Appends `codePoint`, which must be a Unicode scalar value.
void appendUtf8(char32_t codePoint, std::string& out);

/// Whether every byte is below 0x80.
bool isAscii(std::string_view text);

}  // namespace vt
