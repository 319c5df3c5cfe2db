#include "metadata/query/TableLines.h"

namespace vt::query {

std::vector<std::string_view> splitAt(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::vector<TableLine> tableLines(std::string_view tsv) {
  std::vector<TableLine> lines;
  std::size_t number = 0;
  for (std::string_view line : splitAt(tsv, '\n')) {
    ++number;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty() || number == 1) continue;
    lines.push_back({number, splitAt(line, '\t')});
  }
  return lines;
}

}  // namespace vt::query
