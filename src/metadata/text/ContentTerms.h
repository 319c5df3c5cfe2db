#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/query/WordBoundaries.h"

namespace vt {

/// What a text index knows of a content: terms, one behind the other.
///
/// A content is a sequence of pieces: what is between two separators, parted where digits meet
/// letters and at each ideograph. Where pieces begin does not depend on case, so the pieces of a
/// text that is looked for are known as well. A piece of letters may be several words by case; it
/// is known by each run of these, all at the place of the piece.
///
/// What stands between two separators and is several pieces, or a piece that is too long for a
/// term, is a compound. It is known by a term of its own at the place of its first piece, so that
/// the terms of a content, taken together, have all that a pattern may meet between two separators.
///
/// The first byte of a term says what it is of its piece, and whether the piece follows a separator
/// or goes on where another one ended. So a phrase of terms tells "ab 12" from "ab12", and a phrase
/// that ends at the first word of a piece from one that ends in the middle of a word.
enum class TermKind : char {
  kPiece = 'a',          ///< a whole piece behind a separator, or at the beginning
  kJoinedPiece = 'b',    ///< a whole piece that goes on
  kStart = 'c',          ///< the first words of a piece behind a separator, but not all
  kJoinedStart = 'd',    ///< the first words of one that goes on, but not all
  kEnd = 'e',            ///< the last words of a piece, but not all
  kMiddle = 'f',         ///< words of a piece without its first and last
  kIdeographPair = 'g',  ///< two ideographs, nothing between them
  kCompound = 'h'        ///< a compound, kPieceMark or kWordMark before what begins within it
};

/// Before a piece of a compound but its first.
inline constexpr char kPieceMark = '\x1D';
/// Before a word of a compound that begins by case.
inline constexpr char kWordMark = '\x1E';

/// How many bytes of a text are in a term. Of longer ones the term has these and a checksum.
inline constexpr std::size_t kLongestTermText = 250;

/// A term of a content. The bytes are borrowed.
struct ContentTerm {
  std::string_view term;
  std::string_view text;     ///< what it is the term of, as long as that may be
  bool isAtNewPlace = true;  ///< not where the term before is

  TermKind kind() const { return static_cast<TermKind>(term.front()); }
};

/// The term of that kind of `text`.
std::string contentTerm(TermKind kind, std::string_view text);

/// A piece of a content, as offsets in its units.
struct ContentPiece {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool isJoined = false;     ///< goes on where another one ended
  bool isIdeograph = false;  ///< one ideograph
  bool isCaseless = false;   ///< digits or an ideograph: one word, whatever its case
};

/// The piece that begins at `begin`, which is no separator, of text folded as contents are, a blank
/// between words. `isJoined` is for the caller to say.
ContentPiece pieceAt(std::string_view units, std::size_t begin, bool isJoined);

/// The marked text of a compound as it stands in a content, a blank before and behind it.
query::SegmentedText contentOfCompound(std::string_view marked);

/// How many pieces a marked text is.
std::size_t piecesOfCompound(std::string_view marked);

/// Hands out the terms of a content, in order: those of a piece one after the other. Ends when
/// `take` answers false, and answers whether it did not. Linear in the content.
bool forEachTerm(const query::SegmentedText& content,
                 FunctionRef<bool(const ContentTerm& term)> take);

}  // namespace vt
