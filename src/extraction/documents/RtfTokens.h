#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vt {

/// One piece of a Rich Text file.
struct RtfToken {
  enum class Kind {
    kOpen,     ///< {
    kClose,    ///< }
    kControl,  ///< a backslash and a word or sign, as "par" or "~"
    kByte,     ///< \'hh: a byte in the character set of the font
    kText,     ///< what stands there as it is
    kEnd,
  };

  Kind kind = Kind::kEnd;
  std::string_view text;         ///< of a control or a text
  std::optional<int> parameter;  ///< of a control; the byte of kByte
};

/// Cuts a Rich Text file, of anyone's making, into its pieces. Line breaks of the file are left
/// out.
class RtfTokens {
 public:
  explicit RtfTokens(std::string_view bytes) : rest_(bytes) {}

  RtfToken next();
  /// Passes over bytes that are no text.
  void skip(std::size_t count) { rest_.remove_prefix(count < rest_.size() ? count : rest_.size()); }

 private:
  RtfToken control();
  RtfToken word();

  std::string_view rest_;
};

}  // namespace vt
