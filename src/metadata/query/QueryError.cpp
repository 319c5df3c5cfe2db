#include "metadata/query/QueryError.h"

#include <fmt/format.h>
#include <utf8proc.h>

#include <algorithm>
#include <vector>

#include "foundation/UTF8.h"

namespace vt::query {

namespace {

/// One character of the query as a terminal shows it.
struct Cell {
  std::string shown;
  std::size_t columns = 1;
};

Cell cellAt(std::string_view query, std::size_t offset, std::size_t& next) {
  const DecodedCodePoint character = decodeCodePoint(query.substr(offset));
  next = offset + character.length;
  const bool isControl =
      character.codePoint < 0x20 || (character.codePoint >= 0x7F && character.codePoint < 0xA0);
  if (!character.valid || isControl) {
    std::string escaped;
    for (const char byte : query.substr(offset, character.length)) {
      escaped += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
    }
    const std::size_t columns = escaped.size();
    return {std::move(escaped), columns};
  }
  const int width = utf8proc_charwidth(static_cast<utf8proc_int32_t>(character.codePoint));
  return {std::string(query.substr(offset, character.length)),
          static_cast<std::size_t>(std::max(width, 0))};
}

constexpr std::string_view kEllipsis = "...";

}  // namespace

std::string_view nameOfErrorKind(QueryErrorKind kind) {
  switch (kind) {
    case QueryErrorKind::kEmpty:
      return "empty";
    case QueryErrorKind::kLexical:
      return "lexical";
    case QueryErrorKind::kSyntax:
      return "syntax";
    case QueryErrorKind::kArity:
      return "arity";
    case QueryErrorKind::kValue:
      return "value";
    case QueryErrorKind::kType:
      return "type";
    case QueryErrorKind::kLimit:
      return "limit";
  }
  return {};
}

std::string describeQueryError(const QueryError& error) {
  std::string shown;
  for (std::size_t at = 0; at < error.excerpt.size();) shown += cellAt(error.excerpt, at, at).shown;
  return fmt::format("{} error at byte {}: expected {}, found {}", nameOfErrorKind(error.kind),
                     error.offset, error.expected,
                     shown.empty() ? std::string("the end") : "`" + shown + "`");
}

std::string renderQueryError(std::string_view query, const QueryError& error, std::size_t width) {
  // Only what may be shown is looked at: `width` characters, of at most 4 bytes, to either side.
  const std::size_t place = std::min(error.offset, query.size());
  std::size_t first = place;
  for (std::size_t left = width * 4; first > 0 && left > 0; --left) --first;
  while (first > 0 && (static_cast<unsigned char>(query[first]) & 0xC0U) == 0x80) --first;

  std::vector<Cell> cells;
  std::size_t caret = 0;  // index of the cell under which the caret goes
  std::size_t next = first;
  while (next < query.size() && next < place + width * 4) {
    cells.push_back(cellAt(query, next, next));
    if (next <= place) caret = cells.size();
  }

  // The window grows from the caret to both sides, two thirds of it to the left.
  const std::size_t room = std::max<std::size_t>(width, 20) - 2 * kEllipsis.size();
  std::size_t from = caret;
  std::size_t to = caret;
  std::size_t columnsBefore = 0;
  while (from > 0 && columnsBefore + cells[from - 1].columns <= room * 2 / 3) {
    columnsBefore += cells[--from].columns;
  }
  std::size_t columns = columnsBefore;
  while (to < cells.size() && columns + cells[to].columns <= room) columns += cells[to++].columns;
  while (from > 0 && columns + cells[from - 1].columns <= room) {
    columns += cells[--from].columns;
    columnsBefore += cells[from].columns;
  }

  const bool isCutBefore = from > 0 || first > 0;
  const bool isCutAfter = to < cells.size() || next < query.size();
  std::string line;
  if (isCutBefore) line += kEllipsis;
  for (std::size_t i = from; i < to; ++i) line += cells[i].shown;
  if (isCutAfter) line += kEllipsis;
  line += '\n';
  line.append(columnsBefore + (isCutBefore ? kEllipsis.size() : 0), ' ');
  line += '^';
  return line;
}

}  // namespace vt::query
