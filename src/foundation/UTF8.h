#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vt {

/// Stands for bytes that are no text: U+FFFD.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// One code point cut from the front of UTF-8 text.
struct DecodedCodePoint {
  /// U+FFFD when the bytes are invalid.
  char32_t codePoint;
  /// Bytes it took; at least 1. Of invalid bytes, as many as began a code point that then broke
  /// off.
  std::size_t length;
  bool valid;
};

/// Decodes the code point at the front of `text`, which must not be empty. Overlong forms,
/// surrogates and values past U+10FFFF are invalid.
DecodedCodePoint decodeCodePoint(std::string_view text);

/// Whether a code point begins with the byte, of valid UTF-8.
constexpr bool beginsCodePoint(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

/// Appends `codePoint` to `text` as UTF-8; a surrogate or a value past U+10FFFF as U+FFFD.
void appendCodePoint(std::string& text, char32_t codePoint);

/// How many bytes at the front of `text` are below 0x80.
std::size_t asciiLength(std::string_view text);

/// Whether every byte is below 0x80.
inline bool isAscii(std::string_view text) { return asciiLength(text) == text.size(); }

/// How many bytes at the front of `text` are valid UTF-8: the offset of the first that is not, or
/// the whole size.
std::size_t validUTF8Length(std::string_view text);

inline bool isValidUTF8(std::string_view text) { return validUTF8Length(text) == text.size(); }

/// `text` as it can be shown: each run of bytes that cannot be decoded becomes one U+FFFD. Valid
/// text comes back unchanged, control characters included.
std::string displayText(std::string_view text);

}  // namespace vt
