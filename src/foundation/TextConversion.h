#pragma once

#include <iconv.h>

#include <string>
#include <string_view>

namespace vt {

/// A conversion from a character set into UTF-8.
class TextConversion {
 public:
  /// `charset` is a name that iconv knows, such as "SHIFT_JIS".
  explicit TextConversion(const char* charset);
  TextConversion(const TextConversion&) = delete;
  TextConversion& operator=(const TextConversion&) = delete;
  ~TextConversion();

  /// Whether iconv knows the character set.
  explicit operator bool() const;

  /// What is no character becomes U+FFFD; one that the end cuts short is left out.
  std::string convert(std::string_view bytes) const;

 private:
  iconv_t handle_;
};

}  // namespace vt
