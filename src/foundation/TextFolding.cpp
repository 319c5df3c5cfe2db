#include "foundation/TextFolding.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "foundation/AsciiCase.h"
#include "foundation/UTF8.h"

namespace vt {

namespace {

// Below U+0300 nothing combines and every letter is composed already.
constexpr char32_t kFirstThatMayCombine = 0x300;
constexpr char32_t kFirstHangulSyllable = 0xAC00;
constexpr char32_t kLastHangulSyllable = 0xD7A3;

// The longest that one character becomes, in both decomposition and case folding, is 4.
constexpr std::size_t kLongestExpansion = 8;

bool hasFolding(Folding folding, Folding part) {
  return (static_cast<unsigned>(folding) & static_cast<unsigned>(part)) != 0;
}

bool isCombiningMark(utf8proc_int32_t character) {
  const utf8proc_category_t category = utf8proc_category(character);
  return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_MC ||
         category == UTF8PROC_CATEGORY_ME;
}

// utf8proc's options are bits, and their sums no enumerators.
// NOLINTBEGIN(clang-analyzer-optin.core.EnumCastOutOfRange)
constexpr auto kFoldAndDecompose =
    static_cast<utf8proc_option_t>(UTF8PROC_CASEFOLD | UTF8PROC_DECOMPOSE);
constexpr auto kComposeStably = static_cast<utf8proc_option_t>(UTF8PROC_COMPOSE | UTF8PROC_STABLE);
// NOLINTEND(clang-analyzer-optin.core.EnumCastOutOfRange)

/// A character's expansion under utf8proc's `options`.
struct Expansion {
  std::array<utf8proc_int32_t, kLongestExpansion> characters;
  std::size_t length = 0;

  Expansion(utf8proc_int32_t character, utf8proc_option_t options) {
    int boundClass = UTF8PROC_BOUNDCLASS_START;
    const utf8proc_ssize_t needed = utf8proc_decompose_char(
        character, characters.data(), kLongestExpansion, options, &boundClass);
    if (needed >= 0 && static_cast<std::size_t>(needed) <= kLongestExpansion) {
      length = static_cast<std::size_t>(needed);
    } else {
      characters[0] = character;
      length = 1;
    }
  }

  const utf8proc_int32_t* begin() const { return characters.data(); }
  const utf8proc_int32_t* end() const { return characters.data() + length; }
};

utf8proc_int32_t foldCaseSimply(utf8proc_int32_t character) {
  if (character == 0x130) return character;  // İ folds to two characters or, in Turkish only, to i
  const Expansion full(character, UTF8PROC_CASEFOLD);
  // Where the full folding is longer, the simple one is the lower-case letter: ẞ to ß, ᾈ to ᾀ.
  return full.length == 1 ? full.characters[0] : utf8proc_tolower(character);
}

/// Letters that a reader takes for one of ASCII with a stroke or for two joined, and which Unicode
/// does not decompose. Lower case, since they are looked up after case folding; ß, ﬁ and their like
/// come from case folding itself.
std::string_view plainLetters(utf8proc_int32_t character) {
  switch (character) {
    case 0xE6:
      return "ae";
    case 0xF0:
      return "d";
    case 0xF8:
      return "o";
    case 0xFE:
      return "th";
    case 0x111:
      return "d";
    case 0x127:
      return "h";
    case 0x131:
      return "i";
    case 0x138:
      return "q";
    case 0x142:
      return "l";
    case 0x14B:
      return "n";
    case 0x153:
      return "oe";
    case 0x167:
      return "t";
    case 0x180:
      return "b";
    case 0x19A:
      return "l";
    case 0x1B6:
      return "z";
    case 0x1E5:
      return "g";
    case 0x247:
      return "e";
    case 0x249:
      return "j";
    case 0x24D:
      return "r";
    case 0x24F:
      return "y";
    case 0x268:
      return "i";
    case 0x289:
      return "u";
    default:
      return {};
  }
}

void appendWithoutCaseAndMarks(utf8proc_int32_t character, std::string& out) {
  for (const utf8proc_int32_t part : Expansion(character, UTF8PROC_DECOMPOSE)) {
    if (isCombiningMark(part)) continue;
    // Decomposed again, since what case folding gives may carry a mark: ǰ is j and a caron.
    for (const utf8proc_int32_t folded : Expansion(part, kFoldAndDecompose)) {
      if (isCombiningMark(folded)) continue;
      if (const std::string_view plain = plainLetters(folded); !plain.empty()) {
        out += plain;
      } else {
        appendCodePoint(out, static_cast<char32_t>(folded));
      }
    }
  }
}

/// Puts every run of combining marks in canonical order. A stable sort and not the exchange of
/// neighbours that the standard describes, which is quadratic in the length of a run.
void orderMarks(std::vector<utf8proc_int32_t>& text) {
  const auto combiningClass = [](utf8proc_int32_t character) {
    return utf8proc_get_property(character)->combining_class;
  };
  for (auto at = text.begin(); at != text.end();) {
    if (combiningClass(*at) == 0) {
      ++at;
      continue;
    }
    const auto runEnd = std::find_if(
        at, text.end(), [&](utf8proc_int32_t character) { return combiningClass(character) == 0; });
    std::stable_sort(at, runEnd, [&](utf8proc_int32_t a, utf8proc_int32_t b) {
      return combiningClass(a) < combiningClass(b);
    });
    at = runEnd;
  }
}

}  // namespace

std::u32string composedText(std::string_view utf8) {
  std::u32string text;
  text.reserve(utf8.size());
  bool isComposed = true;
  for (std::size_t at = 0; at < utf8.size();) {
    const DecodedCodePoint character = decodeCodePoint(utf8.substr(at));
    text += character.codePoint;
    if (character.codePoint >= kFirstThatMayCombine && character.valid) isComposed = false;
    at += character.length;
  }
  if (isComposed) return text;

  std::vector<utf8proc_int32_t> buffer;
  buffer.reserve(text.size() + text.size() / 2);
  for (const char32_t character : text) {
    if (character < 0xC0) {
      buffer.push_back(static_cast<utf8proc_int32_t>(character));
    } else {
      const Expansion parts(static_cast<utf8proc_int32_t>(character), UTF8PROC_DECOMPOSE);
      buffer.insert(buffer.end(), parts.begin(), parts.end());
    }
  }
  orderMarks(buffer);
  const utf8proc_ssize_t length = utf8proc_normalize_utf32(
      buffer.data(), static_cast<utf8proc_ssize_t>(buffer.size()), kComposeStably);
  text.assign(buffer.begin(), buffer.begin() + std::max<utf8proc_ssize_t>(length, 0));
  return text;
}

void appendFolded(char32_t character, Folding folding, std::string& out) {
  if (character < 0x80) {
    const char ascii = static_cast<char>(character);
    out += hasFolding(folding, Folding::kCase) ? asciiLower(ascii) : ascii;
    return;
  }
  // A syllable is no letter with marks, and its jamo would match as the beginning of others.
  const bool isHangul = character >= kFirstHangulSyllable && character <= kLastHangulSyllable;
  const auto given = static_cast<utf8proc_int32_t>(character);
  if (folding == Folding::kNone || isHangul) {
    appendCodePoint(out, character);
  } else if (folding == Folding::kCase) {
    appendCodePoint(out, static_cast<char32_t>(foldCaseSimply(given)));
  } else if (folding == Folding::kMarks) {
    for (const utf8proc_int32_t part : Expansion(given, UTF8PROC_DECOMPOSE)) {
      if (!isCombiningMark(part)) appendCodePoint(out, static_cast<char32_t>(part));
    }
  } else {
    appendWithoutCaseAndMarks(given, out);
  }
}

std::string foldText(std::string_view utf8, Folding folding) {
  std::string folded;
  if (isAscii(utf8)) {
    folded.resize(utf8.size());
    foldAscii(utf8, folding, folded.data());
    return folded;
  }
  folded.reserve(utf8.size());
  for (const char32_t character : composedText(utf8)) appendFolded(character, folding, folded);
  return folded;
}

void foldAscii(std::string_view text, Folding folding, char* out) {
  if (hasFolding(folding, Folding::kCase)) {
    std::transform(text.begin(), text.end(), out, asciiLower);
  } else {
    std::copy(text.begin(), text.end(), out);
  }
}

}  // namespace vt
