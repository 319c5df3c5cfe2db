#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "metadata/query/Query.h"
#include "metadata/query/QueryError.h"

namespace vt::query {

/// Reads the tokens of a query from the front. The parser asks for what may stand at a place, since
/// one word is an attribute before an operator and text after it.
///
/// A `take` that finds something else leaves the place as it is and answers no. One that finds the
/// token but finds it malformed answers no and sets error().
class QueryLexer {
 public:
  explicit QueryLexer(std::string_view text) : text_(text) {}

  void skipBlanks();
  bool atEnd() const { return offset_ == text_.size(); }
  std::size_t offset() const { return offset_; }
  bool startsWith(std::string_view symbol) const { return rest().starts_with(symbol); }
  const std::optional<QueryError>& error() const { return error_; }

  bool take(std::string_view symbol);
  /// `*`, `**` or the name of an attribute, a function or a constant.
  std::optional<std::string_view> takeName();
  std::optional<Operator> takeOperator();
  /// `[cd]`; 0 when no bracket stands here.
  std::uint8_t takeBracketModifiers();
  /// Any value. `modifiers` gets the bits of letters after a string, besides those it has.
  std::optional<Operand> takeValue(std::uint8_t& modifiers);

  /// Records that `expected` should stand here: what the error is called depends on what does.
  void expect(std::string_view expected);
  void fail(QueryErrorKind kind, std::size_t offset, std::string_view expected);

 private:
  std::string_view rest() const { return text_.substr(offset_); }
  char peek() const { return atEnd() ? '\0' : text_[offset_]; }
  bool takeModifierLetters(char end, std::uint8_t& modifiers);
  std::optional<Operand> takeString(std::uint8_t& modifiers);
  std::optional<Operand> takeWord();
  std::optional<Operand> takeTime();
  bool takeTimeCount(TimeValue& time);
  bool takeIsoText(TimeValue& time, std::size_t open);

  std::string_view text_;
  std::size_t offset_ = 0;
  std::optional<QueryError> error_;
};

/// Whether the byte may stand in a word without quotes; one from 0x80 up only in valid UTF-8.
bool isWordByte(char byte);

}  // namespace vt::query
