#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/TextFolding.h"
#include "metadata/query/LiteralFinder.h"
#include "metadata/query/WordBoundaries.h"

namespace vt::query {

/// One character of a pattern as written: a literal one or a wildcard.
struct PatternCharacter {
  enum class Kind : std::uint8_t { kLiteral, kAnyCharacter, kAnyRun };

  Kind kind = Kind::kLiteral;
  char32_t literal = 0;
};

/// Takes apart a TextOperand::pattern; what is literal is composed (NFC).
std::vector<PatternCharacter> patternCharacters(std::string_view pattern);

/// A text with wildcards, ready to be compared with folded text.
///
/// Every comparison takes time linear in the text: at most one pass for each literal piece and
/// wildcard, of which the language allows 64, and there is no backtracking.
class TextPattern {
 public:
  enum class Extent : std::uint8_t {
    kWholeValue,
    kWholeWords,    ///< anywhere in the text, from boundary to boundary; a `*` at an end opens it
    kContentWords,  ///< likewise, and no wildcard reaches over a separator
  };

  TextPattern(const std::vector<PatternCharacter>& characters, Folding folding, Extent extent);

  /// Whether only matches(const SegmentedText&) can tell.
  bool needsSegments() const;

  /// `units` is folded as the pattern is; needsSegments() must be false.
  bool matches(std::string_view units) const;
  bool matches(const SegmentedText& text) const;

 private:
  struct AnyCharacter {};
  struct AnyRun {};
  using Element = std::variant<LiteralFinder, AnyCharacter, AnyRun>;

  bool findsLiteral(const LiteralFinder& literal, const SegmentedText& text) const;
  bool runThrough(const SegmentedText& text) const;

  Extent extent_;
  bool isOpenAtStart_ = false;  // a `*` stood there; it is then not among the elements
  bool isOpenAtEnd_ = false;
  std::vector<Element> elements_;
};

}  // namespace vt::query
