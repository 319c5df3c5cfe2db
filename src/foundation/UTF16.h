#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vt {

enum class ByteOrder { kBigEndian, kLittleEndian };

/// What became of UTF-16 text.
struct UTF16Decoding {
  /// UTF-8, up to the first error.
  std::string text;
  /// Where in the input, in bytes, a lone surrogate or a lone last byte stands; nothing when all
  /// was text.
  std::optional<std::size_t> errorOffset;
};

/// Turns UTF-16 without a byte order mark into UTF-8. Lone surrogates are errors, not text.
UTF16Decoding decodeUTF16(std::string_view bytes, ByteOrder order);

}  // namespace vt
