#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "foundation/ObjectArray.h"
#include "search/VTSearchResult.h"
#include "vistaro/SearchOptions.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

/// What a search found, and what of it is to be shown.
struct SearchReport {
  std::string query;  ///< as it was run, in the query language
  double seconds = 0;
  std::shared_ptr<ObjectArray<VTSearchResult>> groups;
  std::size_t page = 1;
  /// Items of each group on a page; 0 shows all.
  std::size_t perPage = 0;

  /// Items of all groups together, on whatever page.
  std::size_t count() const;
  /// The half-open range of a group's items that the page shows; empty past its last page.
  std::pair<std::size_t, std::size_t> shown(const VTSearchResult& group) const;
};

/// The report for people: a heading per group, a line per file, a line of totals.
std::string textReport(const SearchReport& report, const Terminal& terminal);

/// Writes the report for programs; docs/command-line.md describes it. `out` tells of failures.
void writeJSONReport(const SearchReport& report, std::FILE* out);

}  // namespace vt::tool
