#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/TextFolding.h"

namespace vt::query {

/// What a character is to the division of text into words.
enum class CharacterClass : std::uint8_t {
  kSeparator,  ///< blank, punctuation (`_` too), symbol, control
  kLower,
  kUpper,
  kLetter,  ///< a letter without case
  kDigit,
  kIdeograph,  ///< Han, kana: written without blanks, so each is a word
  kMark,       ///< combines with what stands before it
};

CharacterClass classOf(char32_t character);

/// Whether a word ends and another begins between two characters of words, whatever their case:
/// so folding hides nothing of it.
bool dividesWordsFolded(CharacterClass before, CharacterClass after);

/// Properties of a position in a text, as bits.
namespace position {
inline constexpr std::uint8_t kCharacter = 1;  ///< a character begins here, or the text ends
inline constexpr std::uint8_t kBoundary = 2;   ///< a match of whole words may begin or end here
inline constexpr std::uint8_t kSeparator = 4;  ///< the character here is no part of a word
}  // namespace position

/// A text folded for comparison, with what is known of each position in it.
struct SegmentedText {
  std::string units;                     ///< UTF-8
  std::vector<std::uint8_t> properties;  ///< one for each byte of `units`, and one for the end
};

/// Folds a text and finds its words.
///
/// A word is a run of letters and digits; within it a new one begins where digits meet letters,
/// where an upper-case letter follows a lower-case one, and at each ideograph. There is a boundary
/// at either end of a word and of every separator. Linear in the text.
SegmentedText segmentText(std::string_view utf8, Folding folding);

/// No name that people give to things is of more words, but what was encoded as letters is. An
/// index has the beginnings and ends of all in it, which is quadratic in their number.
inline constexpr std::size_t kMostWordsByCase = 8;

/// Like segmentText() with both foldings, but each run of separators is a single blank, so that
/// words that follow each other are one blank apart; letters that only their case divides are at
/// most kMostWordsByCase words, the last of them as long as it may be; and each letter that one
/// folds to is a character, so that ß is two.
SegmentedText segmentContent(std::string_view utf8);

}  // namespace vt::query
