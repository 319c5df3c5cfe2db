#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vt::query {

/// Where ordinary words are looked for.
enum class WordsIn {
  kNames,         ///< in the names of files alone
  kNamesAndText,  ///< in the text content, the tags and the comment that people gave, too
};

/// The query that finds files by ordinary words: every word must stand somewhere in the name, case
/// and marks ignored, or, where text is looked at, begin a word of the text content, of a tag or of
/// the comment.
///
/// Words are parted by blanks; double quotes hold several words together as a phrase, a quote that
/// is not closed reaches to the end. Every other character is taken literally. Any bytes give a
/// query that parses: control characters part words and bytes that are not UTF-8 become U+FFFD.
/// None when no word is left, or when the query would exceed the limits of the language.
std::optional<std::string> queryFromWords(std::string_view words,
                                          WordsIn in = WordsIn::kNamesAndText);

/// The condition that one word, or phrase, sets. Where text is looked at it is a choice (`||`).
std::string conditionForWord(std::string_view word, WordsIn in);

/// The text as a string of a query holds it, without its quotes: every character means itself.
std::string escapedPattern(std::string_view text);

/// Whether the text is meant as a query rather than as words, by how it begins. After blanks, `(`
/// and `!` there stands either `InRange(`; or `*`, `**` or a name beginning with kMDItem, _kMDItem
/// or com_, followed by an operator; or any other attribute name followed by `==`. Ordinary words,
/// `a=b` and `true` among them, are not.
bool looksLikeQuery(std::string_view text);

}  // namespace vt::query
