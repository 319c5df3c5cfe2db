#include "metadata/query/TextMatcher.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "foundation/UTF8.h"
#include "metadata/query/PatternWords.h"

namespace vt::query {

namespace {

Folding foldingOf(std::uint8_t modifiers, TextMatcher::Subject subject) {
  if (subject == TextMatcher::Subject::kContent) return Folding::kCaseAndMarks;
  return static_cast<Folding>(((modifiers & modifier::kCase) != 0 ? 1 : 0) |
                              ((modifiers & modifier::kDiacritics) != 0 ? 2 : 0));
}

}  // namespace

TextMatcher::TextMatcher(std::string_view pattern, std::uint8_t modifiers, Subject subject)
    : folding_(foldingOf(modifiers, subject)) {
  using Extent = TextPattern::Extent;
  const std::vector<PatternCharacter> characters = patternCharacters(pattern);
  if ((modifiers & modifier::kTokens) != 0) {
    for (const PatternWord& word : patternWords(characters)) {
      patterns_.emplace_back(word, folding_, Extent::kContentWords);
    }
  } else if (subject == Subject::kContent) {
    PatternWord phrase;
    for (const PatternWord& word : patternWords(characters)) {
      if (!phrase.empty()) phrase.push_back({PatternCharacter::Kind::kLiteral, U' '});
      phrase.insert(phrase.end(), word.begin(), word.end());
    }
    if (!phrase.empty()) patterns_.emplace_back(phrase, folding_, Extent::kContentWords);
  } else {
    patterns_.emplace_back(
        characters, folding_,
        (modifiers & modifier::kWords) != 0 ? Extent::kWholeWords : Extent::kWholeValue);
  }
  needsSegments_ = std::any_of(patterns_.begin(), patterns_.end(),
                               [](const TextPattern& p) { return p.needsSegments(); });
}

bool TextMatcher::matches(std::string_view value) const {
  if (patterns_.empty()) return false;
  if (needsSegments_) return matches(segmentText(value, folding_));

  const TextPattern& pattern = patterns_.front();
  if (!isAscii(value)) return pattern.matches(std::string_view(foldText(value, folding_)));
  if (folding_ == Folding::kNone || folding_ == Folding::kMarks) return pattern.matches(value);
  // Nearly every file name: no allocation, no table.
  std::array<char, 256> folded;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
  if (value.size() > folded.size()) {
    return pattern.matches(std::string_view(foldText(value, folding_)));
  }
  foldAscii(value, folding_, folded.data());
  return pattern.matches(std::string_view(folded.data(), value.size()));
}

bool TextMatcher::matches(const SegmentedText& content) const {
  return !patterns_.empty() &&
         std::all_of(patterns_.begin(), patterns_.end(),
                     [&](const TextPattern& p) { return p.matches(content); });
}

}  // namespace vt::query
