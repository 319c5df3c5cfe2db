#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/types/ContentTypes.h"

namespace vt {

/// Reads one type table, in the steps that its rules need: rows, then what rows say of each other.
class ContentTypesParser {
 public:
  Result<ContentTypes, ContentTypesError> parse(std::string_view tsv);

 private:
  // What a row names before all rows are known.
  struct Row {
    std::size_t line = 0;
    std::string_view parents;  // a list
    std::string_view otherForm;
  };

  void makeRoom(std::string_view tsv);
  /// A piece of the table's text in lower case.
  std::string_view lowercase(std::string_view piece);

  // Each step answers whether the table is right so far; error_ is set when not.
  bool readRows(std::string_view tsv);
  bool readRow(std::string_view line);
  bool resolveParents();
  bool buildTrees();
  bool assignExtensions();
  bool findFallbacks();

  std::optional<ContentTypeId> need(std::string_view identifier, std::size_t line);
  bool fail(std::size_t line, std::string reason);

  ContentTypes table_;
  std::vector<Row> rows_;  // by type id
  std::size_t line_ = 0;
  ContentTypesError error_;
};

}  // namespace vt
