#include "metadata/query/TextMatcher.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "foundation/UTF8.h"

namespace vt::query {

namespace {

using Characters = std::vector<PatternCharacter>;
using Kind = PatternCharacter::Kind;

Folding foldingOf(std::uint8_t modifiers, TextMatcher::Subject subject) {
  if (subject == TextMatcher::Subject::kContent) return Folding::kCaseAndMarks;
  return static_cast<Folding>(((modifiers & modifier::kCase) != 0 ? 1 : 0) |
                              ((modifiers & modifier::kDiacritics) != 0 ? 2 : 0));
}

bool isWildcard(const PatternCharacter& character) { return character.kind != Kind::kLiteral; }

/// The words of a pattern, parted at separators. A word of nothing but `*` asks for nothing.
std::vector<Characters> wordsOf(const Characters& pattern) {
  std::vector<Characters> words;
  Characters word;
  const auto endWord = [&] {
    const bool asksForSomething = std::any_of(
        word.begin(), word.end(), [](const auto& c) { return c.kind != Kind::kAnyRun; });
    if (asksForSomething) words.push_back(word);
    word.clear();
  };
  for (const PatternCharacter& character : pattern) {
    if (!isWildcard(character) && classOf(character.literal) == CharacterClass::kSeparator) {
      endWord();
    } else {
      word.push_back(character);
    }
  }
  endWord();
  return words;
}

}  // namespace

TextMatcher::TextMatcher(std::string_view pattern, std::uint8_t modifiers, Subject subject)
    : folding_(foldingOf(modifiers, subject)) {
  using Extent = TextPattern::Extent;
  const Characters characters = patternCharacters(pattern);
  if ((modifiers & modifier::kTokens) != 0) {
    for (const Characters& word : wordsOf(characters)) {
      patterns_.emplace_back(word, folding_, Extent::kContentWords);
    }
  } else if (subject == Subject::kContent) {
    Characters phrase;
    for (const Characters& word : wordsOf(characters)) {
      if (!phrase.empty()) phrase.push_back({Kind::kLiteral, U' '});
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
