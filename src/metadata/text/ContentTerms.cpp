#include "metadata/text/ContentTerms.h"

#include <fmt/format.h>

#include <algorithm>

#include "foundation/UTF8.h"
#include "metadata/store/FileWriter.h"

namespace vt {
namespace {

using query::CharacterClass;
namespace position = query::position;

// No character of a word is below it.
constexpr char kBeforeChecksum = '\x1F';

/// Of folded text.
bool isAsciiLetter(char unit) { return unit >= 'a' && unit <= 'z'; }

/// The terms of one piece. Borrows what they are made in.
class PieceTerms {
 public:
  PieceTerms(const query::SegmentedText& content, const ContentPiece& piece, std::string& term)
      : units_(content.units), term_(term) {
    bounds_[0] = piece.begin;
    for (std::size_t at = piece.begin + 1; at < piece.end; ++at) {
      if ((content.properties[at] & position::kBoundary) != 0 && words_ < query::kMostWordsByCase) {
        bounds_[words_++] = at;
      }
    }
    bounds_[words_] = piece.end;
    isJoined_ = piece.isJoined;
  }

  /// Hands out each run of words, the whole piece first.
  bool forEach(FunctionRef<bool(const ContentTerm& term)> take) {
    if (!take(term(0, words_))) return false;
    if (words_ == 1) return true;
    for (std::size_t first = 0; first < words_; ++first) {
      for (std::size_t last = first + 1; last <= words_; ++last) {
        const bool isWhole = first == 0 && last == words_;
        if (!isWhole && !take(term(first, last))) return false;
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

  ContentTerm term(std::size_t first, std::size_t last) {
    const std::string_view text = units_.substr(bounds_[first], bounds_[last] - bounds_[first]);
    const bool isWhole = first == 0 && last == words_;
    const TermKind kind = kindOf(first, last);
    if (text.size() > kLongestTermText) {
      term_ = contentTerm(kind, text);
    } else {
      term_ = static_cast<char>(kind);  // into the storage of the one before
      term_ += text;
    }
    return {term_, text, /*isAtNewPlace=*/isWhole};
  }

  std::string_view units_;
  std::size_t bounds_[query::kMostWordsByCase + 1];
  std::size_t words_ = 1;
  bool isJoined_ = false;
  std::string& term_;
};

/// What stands between two separators, with its marks.
class CompoundText {
 public:
  /// Reads on from its first piece. False when it is no compound.
  bool read(const query::SegmentedText& content, const ContentPiece& first) {
    const std::string_view units = content.units;
    const bool isOnePiece = first.end == units.size() || units[first.end] == ' ';
    if (isOnePiece && first.end - first.begin <= kLongestTermText) return false;
    marked_.clear();
    ContentPiece piece = first;
    while (true) {
      append(content, piece);
      if (piece.end == units.size() || units[piece.end] == ' ') return true;
      marked_ += kPieceMark;
      piece = pieceAt(units, piece.end, /*isJoined=*/true);
    }
  }
  std::string_view marked() const { return marked_; }

 private:
  void append(const query::SegmentedText& content, const ContentPiece& piece) {
    for (std::size_t at = piece.begin; at < piece.end; ++at) {
      if (at > piece.begin && (content.properties[at] & position::kBoundary) != 0) {
        marked_ += kWordMark;
      }
      marked_ += content.units[at];
    }
  }

  std::string marked_;
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
  // Most pieces are letters of ASCII throughout.
  while (piece.end < units.size() && isAsciiLetter(units[piece.end])) ++piece.end;
  if (piece.end > begin) before = CharacterClass::kLower;
  for (std::size_t at = piece.end; at < units.size() && units[at] != ' ';) {
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

query::SegmentedText contentOfCompound(std::string_view marked) {
  constexpr std::uint8_t kSeparator =
      position::kCharacter | position::kBoundary | position::kSeparator;
  query::SegmentedText content;
  content.units.reserve(marked.size() + 2);
  content.properties.reserve(marked.size() + 3);
  const auto append = [&](char unit, std::uint8_t properties) {
    content.units += unit;
    content.properties.push_back(properties);
  };
  append(' ', kSeparator);
  std::uint8_t boundary = position::kBoundary;
  for (const char unit : marked) {
    if (unit == kPieceMark || unit == kWordMark) {
      boundary = position::kBoundary;
      continue;
    }
    append(unit, beginsCodePoint(unit) ? position::kCharacter | boundary : 0);
    boundary = 0;
  }
  append(' ', kSeparator);
  content.properties.push_back(position::kCharacter | position::kBoundary);
  return content;
}

std::size_t piecesOfCompound(std::string_view marked) {
  return 1 + static_cast<std::size_t>(std::ranges::count(marked, kPieceMark));
}

bool forEachTerm(const query::SegmentedText& content,
                 FunctionRef<bool(const ContentTerm& term)> take) {
  const std::string_view units = content.units;
  ContentPiece before;
  CompoundText compound;
  std::string term;
  for (std::size_t at = 0; at < units.size();) {
    if (units[at] == ' ') {
      ++at;
      continue;
    }
    const ContentPiece piece = pieceAt(units, at, at > 0 && units[at - 1] != ' ');
    // At the place of the first of the two, whose terms were the last to be handed out.
    if (piece.isIdeograph && piece.isJoined && before.isIdeograph) {
      const std::string_view pair = units.substr(before.begin, piece.end - before.begin);
      term = contentTerm(TermKind::kIdeographPair, pair);
      if (!take({term, pair, /*isAtNewPlace=*/false})) return false;
    }
    if (!PieceTerms(content, piece, term).forEach(take)) return false;
    if (!piece.isJoined && compound.read(content, piece)) {
      term = contentTerm(TermKind::kCompound, compound.marked());
      if (!take({term, compound.marked(), /*isAtNewPlace=*/false})) return false;
    }
    before = piece;
    at = piece.end;
  }
  return true;
}

}  // namespace vt
