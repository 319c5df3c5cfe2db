#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace vt {

/// The most of a file's text that is kept: what is beyond is left out. Some 3,000 pages.
inline constexpr std::size_t kMostExtractedText = std::size_t{16} << 20;

/// Gathers the text of a file as words, with one blank or line break between what stands apart.
class BoundedText {
 public:
  /// Adds UTF-8 to the word or line that is under way. White space is kept as it is.
  void append(std::string_view text);
  /// What comes next is another word.
  void space() { separate(' '); }
  /// What comes next is another line.
  void newLine() { separate('\n'); }

  /// Whether more would be left out.
  bool isFull() const { return text_.size() >= kMostExtractedText; }
  /// UTF-8 with a replacement for whatever was none.
  std::string take();

 private:
  void separate(char separator);

  std::string text_;
};

}  // namespace vt
