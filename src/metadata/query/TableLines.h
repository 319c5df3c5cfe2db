#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace vt::query {

/// The parts of `text` between separators: always one more than there are separators.
std::vector<std::string_view> splitAt(std::string_view text, char separator);

/// One line of a table that is not its heading.
struct TableLine {
  std::size_t number = 0;  ///< 1 is the heading
  std::vector<std::string_view> columns;
};

/// The lines of a table with a heading, columns separated by tabs. Empty lines are left out; a line
/// may end in CR LF. The views are into `tsv`.
std::vector<TableLine> tableLines(std::string_view tsv);

}  // namespace vt::query
