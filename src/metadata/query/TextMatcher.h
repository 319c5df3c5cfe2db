#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "metadata/query/Query.h"
#include "metadata/query/TextPattern.h"

namespace vt::query {

/// A text operand with its modifiers, ready to be compared with values or with text content.
class TextMatcher {
 public:
  enum class Subject : std::uint8_t {
    kValue,    ///< as the modifiers say
    kContent,  ///< by words with both foldings: one phrase, or with t its words in any order
  };

  TextMatcher(std::string_view pattern, std::uint8_t modifiers, Subject subject);

  /// Whether a value, of any bytes, matches. The subject must be kValue.
  bool matches(std::string_view value) const;

  /// Whether text content, as segmentContent() gives it, matches. The subject must be kContent.
  bool matches(const SegmentedText& content) const;

 private:
  Folding folding_;
  std::vector<TextPattern> patterns_;  // all must match; none is no match
  bool needsSegments_;
};

}  // namespace vt::query
