#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vt::query {

enum class QueryErrorKind {
  kEmpty,    ///< no text, or blanks only
  kLexical,  ///< a byte that belongs nowhere, or a string that is not closed
  kSyntax,   ///< something else was expected here
  kArity,    ///< too few or too many arguments of InRange or $time
  kValue,    ///< a malformed number, date, modifier or unit
  kType,     ///< an operation that the attribute's type does not have
  kLimit,    ///< the query is too long, too deep or too wide
};

/// Why a query was refused.
struct QueryError {
  QueryErrorKind kind = QueryErrorKind::kSyntax;
  std::size_t offset = 0;  ///< in bytes; at most the length of the query
  std::string expected;    ///< "an operator", "a closing parenthesis"
  std::string excerpt;     ///< what stands there instead, cut short; empty at the end

  friend bool operator==(const QueryError&, const QueryError&) = default;
};

/// "lexical", "syntax", ...
std::string_view nameOfErrorKind(QueryErrorKind kind);

/// One line for people, without a line feed: the kind, the byte offset, what was expected and what
/// stands there.
std::string describeQueryError(const QueryError& error);

/// Two lines for a terminal, without a line feed after the second: the part of the query around the
/// error, then blanks and a caret below the offending place.
///
/// `query` is the text that was parsed. Control bytes and bytes that are not UTF-8 are shown as
/// `\xHH`; a query longer than `width` columns is cut on either side and marked with "..." there.
/// Columns are counted by code point, marks that combine taking none and wide characters two.
std::string renderQueryError(std::string_view query, const QueryError& error,
                             std::size_t width = 78);

}  // namespace vt::query
