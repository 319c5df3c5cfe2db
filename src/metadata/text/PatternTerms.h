#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "metadata/query/PatternWords.h"
#include "metadata/query/TextPattern.h"
#include "metadata/text/Vocabulary.h"

namespace vt {

/// Where a word stands among words that are to follow each other.
struct PlaceInPhrase {
  bool isFirst = true;
  bool isLast = true;
};

/// Which terms a word of a pattern may be in a content. Behind and before each other word of its
/// phrase is a separator: there it has to reach the end of what separators part.
class PatternTerms {
 public:
  PatternTerms(const query::PatternWord& word, PlaceInPhrase place);

  /// What its terms begin with, one after the other: they are among these.
  const std::vector<std::string>& prefixes() const { return prefixes_; }

  /// Of a term that begins with one of them.
  bool matches(const KnownTerm& term) const;

  /// How many places a term takes.
  static std::size_t lengthOf(const KnownTerm& term);

 private:
  query::TextPattern pieces_;
  query::TextPattern compounds_;
  std::string longestLiteral_;
  std::vector<std::string> prefixes_;
};

}  // namespace vt
