#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// Terms that follow each other; the last one may be but the beginning of a term.
struct TermPhrase {
  std::vector<std::string> terms;
  bool endsInPrefix = false;

  friend bool operator==(const TermPhrase&, const TermPhrase&) = default;
};

/// A text operand as a question to a text index: which contents it matches, to the letter.
struct ContentQuery {
  /// Of each element a content has to hold at least one phrase. Without elements none matches.
  std::vector<std::vector<TermPhrase>> all;
};

/// The question that a TextOperand::pattern with its modifiers is when text content is compared
/// with it. Nothing when terms can't tell: when a `*` or `?` stands elsewhere than at the end of a
/// word that nothing follows, or a piece of more than kLongestTermText bytes is to be completed.
std::optional<ContentQuery> contentQueryOf(std::string_view pattern, std::uint8_t modifiers);

}  // namespace vt
