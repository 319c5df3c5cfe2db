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
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.pop_back();
  return isValidUTF8(text) ? text : displayText(text);
}

}  // namespace vt
