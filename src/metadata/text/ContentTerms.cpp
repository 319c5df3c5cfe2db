#include "metadata/text/ContentTerms.h"

#include <fmt/format.h>

#include "foundation/UTF8.h"
#include "metadata/store/FileWriter.h"

namespace vt {
namespace {

using query::CharacterClass;

// No character of a word is below it.
constexpr char kBeforeChecksum = '\x1F';

/// The terms of one piece.
class PieceTerms {
 public:
  PieceTerms(const query::SegmentedText& content, const ContentPiece& piece)
      : units_(content.units) {
    bounds_[0] = piece.begin;
    for (std::size_t at = piece.begin + 1; at < piece.end; ++at) {
      if ((content.properties[at] & query::position::kBoundary) != 0 &&
          words_ < query::kMostWordsByCase) {
        bounds_[words_++] = at;
      }
    }
    bounds_[words_] = piece.end;
    isJoined_ = piece.isJoined;
  }

  /// Hands out each run of words, the whole piece first.
  bool forEach(FunctionRef<bool(std::string_view term, bool isFirst)> take) {
    if (!take(term(0, words_), /*isFirst=*/true)) return false;
    if (words_ == 1) return true;
    for (std::size_t first = 0; first < words_; ++first) {
      for (std::size_t last = first + 1; last <= words_; ++last) {
        const bool isWhole = first == 0 && last == words_;
        if (!isWhole && !take(term(first, last), /*isFirst=*/false)) return false;
      }
    }
    return true;
  }

 private:
  TermKind kindOf(std::size_t first, std::size_t last) const {
    if (first > 0) return last == words_ ? TermKind::kEnd : TermKind::kMiddle;
    if (last == words_) return isJoined_ ? TermKind::kJoinedPiece : TermKind::kPiece;
    return isJoined_ ? TermKind::kJoinedStart : TermKind::kStart;
  }

  std::string_view term(std::size_t first, std::size_t last) {
    const std::string_view text = units_.substr(bounds_[first], bounds_[last] - bounds_[first]);
    const TermKind kind = kindOf(first, last);
    if (text.size() > kLongestTermText) {
      term_ = contentTerm(kind, text);
    } else {
      term_ = static_cast<char>(kind);  // into the storage of the one before
      term_ += text;
    }
    return term_;
  }

  std::string_view units_;
  std::size_t bounds_[query::kMostWordsByCase + 1] = {};
  std::size_t words_ = 1;
  bool isJoined_ = false;
  std::string term_;
};

}  // namespace

std::string contentTerm(TermKind kind, std::string_view text) {
  std::string term(1, static_cast<char>(kind));
  term += text.substr(0, kLongestTermText);
  if (text.size() > kLongestTermText) {
    term += kBeforeChecksum;
    term += fmt::format("{:016x}", checksumOf(text));
  }
  return term;
}

ContentPiece pieceAt(std::string_view units, std::size_t begin, bool isJoined) {
  ContentPiece piece{.begin = begin, .end = begin, .isJoined = isJoined};
  CharacterClass before = CharacterClass::kSeparator;
  for (std::size_t at = begin; at < units.size() && units[at] != ' ';) {
    const DecodedCodePoint character = decodeCodePoint(units.substr(at));
    const CharacterClass kind = query::classOf(character.codePoint);
    if (at > begin && query::dividesWordsFolded(before, kind)) break;
    at += character.length;
    piece.end = at;
    before = kind;
  }
  piece.isIdeograph = before == CharacterClass::kIdeograph;
  piece.isCaseless = piece.isIdeograph || before == CharacterClass::kDigit;
  return piece;
}

bool forEachTerm(const query::SegmentedText& content,
                 FunctionRef<bool(std::string_view term, bool isFirst)> take) {
  const std::string_view units = content.units;
  ContentPiece before;
  for (std::size_t at = 0; at < units.size();) {
    if (units[at] == ' ') {
      ++at;
      continue;
    }
    const ContentPiece piece = pieceAt(units, at, at > 0 && units[at - 1] != ' ');
    // At the place of the first of the two, whose terms were the last to be handed out.
    if (piece.isIdeograph && piece.isJoined && before.isIdeograph &&
        !take(contentTerm(TermKind::kIdeographPair,
                          units.substr(before.begin, piece.end - before.begin)),
              /*isFirst=*/false)) {
      return false;
    }
    if (!PieceTerms(content, piece).forEach(take)) return false;
    before = piece;
    at = piece.end;
  }
  return true;
}

}  // namespace vt
