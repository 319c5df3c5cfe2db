#include "metadata/text/PatternTerms.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "foundation/UTF8.h"

namespace vt {
namespace {

using query::PatternCharacter;
using query::PatternWord;
using query::TextPattern;
using Kind = PatternCharacter::Kind;

constexpr Folding kFolding = Folding::kCaseAndMarks;

/// The kinds of the terms of pieces that the word may be. Each begins or ends where words do, but
/// the word need not where it is open.
std::string_view kindsOf(bool isOpenAtStart, bool isOpenAtEnd, PlaceInPhrase place) {
  // In the order of TermKind: a whole piece, joined or not; its first words; its last; its middle.
  if (!place.isFirst) return place.isLast && !isOpenAtEnd ? "ac" : "a";
  if (!place.isLast || isOpenAtEnd) return isOpenAtStart ? "ab" : "abe";
  return isOpenAtStart ? "abcd" : "abcdef";
}

/// The word with the separators that are beside it.
PatternWord amongSeparators(const PatternWord& word, PlaceInPhrase place) {
  constexpr PatternCharacter kBlank{Kind::kLiteral, U' '};
  PatternWord phrase;
  if (!place.isFirst) phrase.push_back(kBlank);
  phrase.insert(phrase.end(), word.begin(), word.end());
  if (!place.isLast) phrase.push_back(kBlank);
  return phrase;
}

/// The runs of letters between wildcards, folded.
std::vector<std::string> literalsOf(const PatternWord& word) {
  std::vector<std::string> literals(1);
  for (const PatternCharacter& character : word) {
    if (character.kind == Kind::kLiteral) {
      appendFolded(character.literal, kFolding, literals.back());
    } else {
      literals.emplace_back();
    }
  }
  return literals;
}

bool holds(std::string_view text, std::string_view literal) {
  return text.find(literal) != std::string_view::npos;
}

/// What was marked, without its marks.
std::string unmarked(std::string_view text) {
  std::string units(text);
  std::erase_if(units, [](char unit) { return unit == kPieceMark || unit == kWordMark; });
  return units;
}

/// A term's text as TextPattern takes it.
query::SegmentedText segmented(std::string_view text) {
  query::SegmentedText result;
  result.units = text;
  result.properties.reserve(text.size() + 1);
  for (const char unit : text) {
    result.properties.push_back(beginsCodePoint(unit) ? query::position::kCharacter : 0);
  }
  result.properties.push_back(query::position::kCharacter);
  return result;
}

}  // namespace

PatternTerms::PatternTerms(const PatternWord& word, PlaceInPhrase place)
    : pieces_(word, kFolding, TextPattern::Extent::kWholeValue),
      compounds_(amongSeparators(word, place), kFolding, TextPattern::Extent::kContentWords) {
  std::vector<std::string> literals = literalsOf(word);
  const std::string beginning = literals.front();
  longestLiteral_ = *std::ranges::max_element(literals, {}, &std::string::size);
  for (const char kind :
       kindsOf(word.front().kind == Kind::kAnyRun, word.back().kind == Kind::kAnyRun, place)) {
    prefixes_.push_back(kind + beginning);
  }
  // Marks may stand anywhere in a compound, and the word behind others.
  prefixes_.emplace_back(1, static_cast<char>(TermKind::kCompound));
}

bool PatternTerms::matches(const KnownTerm& term) const {
  if (static_cast<TermKind>(term.term.front()) == TermKind::kCompound) {
    return holds(unmarked(term.text), longestLiteral_) &&
           compounds_.matches(contentOfCompound(term.text));
  }
  if (!holds(term.text, longestLiteral_)) return false;
  return pieces_.needsSegments() ? pieces_.matches(segmented(term.text))
                                 : pieces_.matches(term.text);
}

std::size_t PatternTerms::lengthOf(const KnownTerm& term) {
  return static_cast<TermKind>(term.term.front()) == TermKind::kCompound
             ? piecesOfCompound(term.text)
             : 1;
}

}  // namespace vt
