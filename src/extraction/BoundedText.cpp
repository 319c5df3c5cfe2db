#include "extraction/BoundedText.h"

#include <algorithm>

#include "foundation/UTF8.h"

namespace vt {

void BoundedText::append(std::string_view text) {
  text_.append(text.substr(0, kMostExtractedText - std::min(text_.size(), kMostExtractedText)));
}

void BoundedText::separate(char separator) {
  if (text_.empty() || isFull() || text_.back() == '\n') return;
  if (text_.back() == ' ') {
    text_.back() = separator;
  } else {
    text_ += separator;
  }
}

std::string BoundedText::take() {
  std::string text = std::exchange(text_, {});
  if (!isValidUTF8(text)) {
    // What the bound has cut within a character is left out; other bytes that are no text are
    // replaced, by more.
    const std::size_t valid = validUTF8Length(text);
    if (text.size() >= kMostExtractedText && text.size() - valid < 4) text.resize(valid);
    text = displayText(text);
    text.resize(validUTF8Length(std::string_view(text).substr(0, kMostExtractedText)));
  }
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.pop_back();
  return text;
}

}  // namespace vt
