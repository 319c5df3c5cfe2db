#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vt {

/// Which differences between texts do not count.
enum class Folding : std::uint8_t {
  kNone = 0,          ///< only how a character is composed
  kCase = 1,          ///< simple case folding: one character stays one
  kMarks = 2,         ///< marks that combine with a letter are dropped
  kCaseAndMarks = 3,  ///< both, and letters that need two: ß is ss, æ is ae, ø is o
};

/// The text in Unicode's composed form (NFC). Bytes that are not UTF-8 give one U+FFFD each, so a
/// file name of any bytes has a text. Takes time n log n at worst, for runs of combining marks;
/// linear otherwise.
std::u32string composedText(std::string_view utf8);

/// Appends, in UTF-8, what one character of composed text folds to: none, one or more characters.
void appendFolded(char32_t character, Folding folding, std::string& out);

/// Two texts are alike under `folding` when this gives the same bytes for both. UTF-8.
std::string foldText(std::string_view utf8, Folding folding);

/// foldText() of a text that is ASCII throughout, into `out`, which has room for `text.size()`
/// bytes.
void foldAscii(std::string_view text, Folding folding, char* out);

}  // namespace vt
