#include "metadata/text/ContentQuery.h"

#include <utility>

#include "foundation/TextFolding.h"
#include "metadata/query/Query.h"
#include "metadata/text/ContentTerms.h"

namespace vt {
namespace {

using Kind = query::PatternCharacter::Kind;
using Phrases = std::vector<TermPhrase>;

/// Words to be found one behind the other, folded, a blank between them.
struct Wanted {
  std::string text;
  bool isOpenAtEnd = false;
};

/// Nothing when a wildcard stands elsewhere than at the end.
std::optional<Wanted> wantedOf(const std::vector<query::PatternWord>& words) {
  Wanted wanted;
  for (const query::PatternWord& word : words) {
    if (wanted.isOpenAtEnd) return std::nullopt;
    if (!wanted.text.empty()) wanted.text += ' ';
    for (const query::PatternCharacter& character : word) {
      if (character.kind == Kind::kAnyRun) {
        wanted.isOpenAtEnd = true;
      } else if (character.kind == Kind::kLiteral && !wanted.isOpenAtEnd) {
        appendFolded(character.literal, Folding::kCaseAndMarks, wanted.text);
      } else {
        return std::nullopt;
      }
    }
  }
  return wanted;
}

std::vector<ContentPiece> piecesOf(std::string_view text) {
  std::vector<ContentPiece> pieces;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == ' ') {
      ++at;
      continue;
    }
    pieces.push_back(pieceAt(text, at, at > 0 && text[at - 1] != ' '));
    at = pieces.back().end;
  }
  return pieces;
}

bool areIdeographsInARow(const std::vector<ContentPiece>& pieces) {
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (!pieces[i].isIdeograph || (i > 0 && !pieces[i].isJoined)) return false;
  }
  return true;
}

/// What the piece at `index` of `pieces` may be in a content.
std::vector<TermKind> kindsAt(const std::vector<ContentPiece>& pieces, std::size_t index,
                              bool isPrefix) {
  using enum TermKind;
  const ContentPiece& piece = pieces[index];
  const bool isFirst = index == 0;
  const bool isLast = index + 1 == pieces.size();
  std::vector<TermKind> kinds;
  // Before the first anything may stand, if a word begins there.
  if (isFirst || !piece.isJoined) kinds.push_back(kPiece);
  if (isFirst || piece.isJoined) kinds.push_back(kJoinedPiece);
  if (piece.isCaseless) return kinds;
  if (isFirst) kinds.push_back(kEnd);
  // What begins the first words of a piece begins the piece, too.
  if (!isLast || isPrefix) return kinds;
  if (isFirst || !piece.isJoined) kinds.push_back(kStart);
  if (isFirst || piece.isJoined) kinds.push_back(kJoinedStart);
  if (isFirst) kinds.push_back(kMiddle);
  return kinds;
}

/// Nothing when a piece is to be completed of which a term has but the beginning.
std::optional<Phrases> phrasesFor(const Wanted& wanted) {
  const std::vector<ContentPiece> pieces = piecesOf(wanted.text);
  const auto textOf = [&](std::size_t first, std::size_t last) {
    return std::string_view(wanted.text)
        .substr(pieces[first].begin, pieces[last].end - pieces[first].begin);
  };
  if (pieces.size() > 1 && areIdeographsInARow(pieces)) {
    TermPhrase pairs;
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
      pairs.terms.push_back(contentTerm(TermKind::kIdeographPair, textOf(i, i + 1)));
    }
    return Phrases{std::move(pairs)};
  }
  // Behind an ideograph nothing is left open: a word ends there.
  const bool endsInPrefix = wanted.isOpenAtEnd && !pieces.back().isIdeograph;
  if (endsInPrefix && pieces.back().end - pieces.back().begin > kLongestTermText) {
    return std::nullopt;
  }
  Phrases phrases(1);
  phrases[0].endsInPrefix = endsInPrefix;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    Phrases longer;
    for (const TermKind kind : kindsAt(pieces, i, endsInPrefix)) {
      for (const TermPhrase& phrase : phrases) {
        longer.push_back(phrase);
        longer.back().terms.push_back(contentTerm(kind, textOf(i, i)));
      }
    }
    phrases = std::move(longer);
  }
  return phrases;
}

}  // namespace

ContentQuery contentQueryOf(std::string_view pattern, std::uint8_t modifiers) {
  const std::vector<query::PatternWord> words =
      query::patternWords(query::patternCharacters(pattern));
  std::vector<std::vector<query::PatternWord>> elements;
  if ((modifiers & query::modifier::kTokens) != 0) {
    for (const query::PatternWord& word : words) elements.push_back({word});
  } else if (!words.empty()) {
    elements.push_back(words);
  }
  ContentQuery result;
  for (std::vector<query::PatternWord>& element : elements) {
    const std::optional<Wanted> wanted = wantedOf(element);
    std::optional<Phrases> phrases = wanted ? phrasesFor(*wanted) : std::nullopt;
    if (phrases) {
      result.all.push_back({*std::move(phrases), {}});
    } else {
      result.all.push_back({{}, std::move(element)});
    }
  }
  return result;
}

}  // namespace vt
