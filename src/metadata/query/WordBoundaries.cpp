#include "metadata/query/WordBoundaries.h"

#include <utf8proc.h>

#include <array>
#include <cstddef>
#include <utility>

#include "foundation/AsciiCase.h"
#include "foundation/UTF8.h"

namespace vt::query {

namespace {

constexpr std::array<CharacterClass, 128> kAsciiClasses = [] {
  std::array<CharacterClass, 128> classes{};  // kSeparator
  for (std::size_t c = 'a'; c <= 'z'; ++c) classes[c] = CharacterClass::kLower;
  for (std::size_t c = 'A'; c <= 'Z'; ++c) classes[c] = CharacterClass::kUpper;
  for (std::size_t c = '0'; c <= '9'; ++c) classes[c] = CharacterClass::kDigit;
  return classes;
}();

bool isIdeograph(char32_t c) {
  if (c == 0x3099 || c == 0x309A || c == 0x30FB) return false;  // voice marks, middle dot
  return (c >= 0x3041 && c <= 0x30FF) ||                        // kana
         (c >= 0x31F0 && c <= 0x31FF) ||                        // more katakana
         (c >= 0x3400 && c <= 0x4DBF) || (c >= 0x4E00 && c <= 0x9FFF) ||
         (c >= 0xF900 && c <= 0xFAFF) || (c >= 0x20000 && c <= 0x3FFFF) || c == 0x3005 ||
         c == 0x3007;
}

/// Whether a word ends and another begins between two letters by their case.
bool changesCase(CharacterClass before, CharacterClass after) {
  return before == CharacterClass::kLower && after == CharacterClass::kUpper;
}

/// Takes a composed text character by character and notes the positions.
class Segmenter {
 public:
  Segmenter(Folding folding, bool collapsesSeparators, std::size_t sizeHint)
      : folding_(folding), collapsesSeparators_(collapsesSeparators) {
    text_.units.reserve(sizeHint);
    text_.properties.reserve(sizeHint + 1);
  }

  void add(char32_t character) {
    const CharacterClass given = classOf(character);
    // A mark belongs to what it follows.
    const CharacterClass kind = given == CharacterClass::kMark ? before_ : given;
    if (kind == CharacterClass::kSeparator) {
      if (collapsesSeparators_ && before_ == kind && !text_.units.empty()) return;
      pending_ |= position::kCharacter | position::kBoundary | position::kSeparator;
      append(collapsesSeparators_ ? U' ' : character);
    } else {
      pending_ |= position::kCharacter;
      if (beginsWord(given, kind)) pending_ |= position::kBoundary;
      append(character);
    }
    before_ = kind;
  }

  /// What add() does with each, quicker, where separators collapse and both foldings are asked for.
  void addAsciiOfContent(std::string_view ascii) {
    const std::size_t begin = text_.units.size();
    text_.units.resize(begin + ascii.size());
    text_.properties.resize(begin + ascii.size());
    std::size_t end = begin;
    for (const char character : ascii) {
      const CharacterClass kind = kAsciiClasses[static_cast<unsigned char>(character)];
      const bool isSeparator = kind == CharacterClass::kSeparator;
      if (isSeparator && before_ == kind && end > 0) continue;
      std::uint8_t properties = position::kCharacter;
      if (isSeparator) {
        properties |= position::kBoundary | position::kSeparator;
      } else if (kind != before_ && beginsWord(kind, kind)) {
        properties |= position::kBoundary;
      }
      text_.units[end] = isSeparator ? ' ' : asciiLower(character);
      text_.properties[end] = properties;
      ++end;
      before_ = kind;
    }
    text_.units.resize(end);
    text_.properties.resize(end);
  }

  SegmentedText finish() && {
    text_.properties.push_back(pending_ | position::kCharacter | position::kBoundary);
    return std::move(text_);
  }

 private:
  bool beginsWord(CharacterClass given, CharacterClass kind) {
    if (before_ == CharacterClass::kSeparator ||
        (given != CharacterClass::kMark && dividesWordsFolded(before_, kind))) {
      wordsByCase_ = 1;
      return true;
    }
    if (given == CharacterClass::kMark || !changesCase(before_, kind)) return false;
    if (collapsesSeparators_ && wordsByCase_ == kMostWordsByCase) return false;
    ++wordsByCase_;
    return true;
  }

  void append(char32_t character) {
    appendFolded(character, folding_, text_.units);
    // One that folds to nothing leaves its properties to the next.
    if (text_.properties.size() == text_.units.size()) return;
    const std::size_t begin = text_.properties.size();
    text_.properties.push_back(pending_);
    text_.properties.resize(text_.units.size(), 0);
    if (collapsesSeparators_) markCharactersFrom(begin + 1);
    pending_ = 0;
  }

  /// What is kept of a content tells nothing of how many letters one had been, so each counts.
  void markCharactersFrom(std::size_t at) {
    for (; at < text_.units.size(); ++at) {
      if (beginsCodePoint(text_.units[at])) text_.properties[at] |= position::kCharacter;
    }
  }

  const Folding folding_;
  const bool collapsesSeparators_;
  SegmentedText text_;
  std::uint8_t pending_ = 0;
  std::size_t wordsByCase_ = 0;  // since letters began that only their case divides
  CharacterClass before_ = CharacterClass::kSeparator;
};

SegmentedText segment(std::string_view utf8, Folding folding, bool collapsesSeparators) {
  Segmenter segmenter(folding, collapsesSeparators, utf8.size());
  if (isAscii(utf8) && collapsesSeparators && folding == Folding::kCaseAndMarks) {
    segmenter.addAsciiOfContent(utf8);
  } else if (isAscii(utf8)) {
    for (const char c : utf8) segmenter.add(static_cast<unsigned char>(c));
  } else {
    for (const char32_t c : composedText(utf8)) segmenter.add(c);
  }
  return std::move(segmenter).finish();
}

}  // namespace

bool dividesWordsFolded(CharacterClass before, CharacterClass after) {
  if (before == CharacterClass::kIdeograph || after == CharacterClass::kIdeograph) return true;
  return (before == CharacterClass::kDigit) != (after == CharacterClass::kDigit);
}

CharacterClass classOf(char32_t character) {
  if (character < 128) return kAsciiClasses[character];
  if (isIdeograph(character)) return CharacterClass::kIdeograph;
  switch (utf8proc_category(static_cast<utf8proc_int32_t>(character))) {
    case UTF8PROC_CATEGORY_LL:
      return CharacterClass::kLower;
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LT:
      return CharacterClass::kUpper;
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
      return CharacterClass::kLetter;
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
    case UTF8PROC_CATEGORY_NO:
      return CharacterClass::kDigit;
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ME:
      return CharacterClass::kMark;
    default:
      return CharacterClass::kSeparator;
  }
}

SegmentedText segmentText(std::string_view utf8, Folding folding) {
  return segment(utf8, folding, /*collapsesSeparators=*/false);
}

SegmentedText segmentContent(std::string_view utf8) {
  return segment(utf8, Folding::kCaseAndMarks, /*collapsesSeparators=*/true);
}

}  // namespace vt::query
