#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/query/PatternWords.h"

namespace vt {

/// Terms that follow each other; the last one may be but the beginning of a term.
struct TermPhrase {
  std::vector<std::string> terms;
  bool endsInPrefix = false;

  friend bool operator==(const TermPhrase&, const TermPhrase&) = default;
};

/// What a content has to hold: one of several phrases or, when `pattern` is not empty, words that
/// follow each other and match these, as whatever terms the index has.
struct ContentElement {
  std::vector<TermPhrase> phrases;
  std::vector<query::PatternWord> pattern;
};

/// A text operand as a question to a text index: which contents it matches, to the letter.
struct ContentQuery {
  /// A content has to hold each element. Without elements none matches.
  std::vector<ContentElement> all;
};

/// The question that a TextOperand::pattern with its modifiers is when text content is compared
/// with it.
ContentQuery contentQueryOf(std::string_view pattern, std::uint8_t modifiers);

}  // namespace vt
