#include "metadata/query/FoldedPattern.h"

#include <algorithm>
#include <vector>

#include "metadata/query/Query.h"
#include "metadata/query/TextPattern.h"
#include "metadata/query/WordBoundaries.h"

namespace vt::query {

namespace {

constexpr std::uint8_t kBothFoldings = modifier::kCase | modifier::kDiacritics;

/// Whether a character folds by case alone to an iota, as also U+0345 does: the one mark that is a
/// letter without its case, and that folding by marks drops.
bool mayBeIota(const PatternCharacter& character) {
  constexpr std::u32string_view kIotas = U"\u0345\u0399\u03B9\u1FBE";
  return character.kind == PatternCharacter::Kind::kLiteral &&
         kIotas.find(character.literal) != std::u32string_view::npos;
}

}  // namespace

bool FoldedPattern::admits(std::string_view folded) const {
  if (isOpenAtStart && isOpenAtEnd) return folded.find(literal) != std::string_view::npos;
  if (isOpenAtStart) return folded.ends_with(literal);
  if (isOpenAtEnd) return folded.starts_with(literal);
  return folded == literal;
}

FoldedPattern foldedPatternOf(std::string_view pattern, std::uint8_t modifiers) {
  using Kind = PatternCharacter::Kind;
  const bool asksForTokens = (modifiers & modifier::kTokens) != 0;
  FoldedPattern result;
  std::string piece;
  const auto endPiece = [&] {
    if (piece.size() > result.literal.size()) result.literal = piece;
    piece.clear();
  };
  const std::vector<PatternCharacter> characters = patternCharacters(pattern);
  if ((modifiers & kBothFoldings) == modifier::kCase &&
      std::ranges::any_of(characters, mayBeIota)) {
    return result;
  }
  for (const PatternCharacter& character : characters) {
    const bool isLiteral = character.kind == Kind::kLiteral;
    if (isLiteral && !(asksForTokens && classOf(character.literal) == CharacterClass::kSeparator)) {
      appendFolded(character.literal, Folding::kCaseAndMarks, piece);
    } else {
      endPiece();
    }
  }
  endPiece();
  if (result.literal.empty() || (modifiers & (modifier::kWords | modifier::kTokens)) != 0) {
    return result;
  }

  const auto isRun = [](const PatternCharacter& c) { return c.kind == Kind::kAnyRun; };
  const auto first = std::ranges::find_if_not(characters, isRun);
  const auto last = std::find_if_not(characters.rbegin(), characters.rend(), isRun).base();
  if (std::any_of(first, last, [](const auto& c) { return c.kind != Kind::kLiteral; })) {
    return result;
  }
  result.isOpenAtStart = first != characters.begin();
  result.isOpenAtEnd = last != characters.end();
  result.decides = (modifiers & kBothFoldings) == kBothFoldings;
  return result;
}

}  // namespace vt::query
