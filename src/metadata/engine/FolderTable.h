#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/engine/ClassVerdicts.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// A folder of a segment to search below.
struct IndexedScope {
  std::uint32_t folder;
  std::string shownPath;  ///< what paths of hits begin with
  std::string canonicalPath;
};

/// The folder at `path`, absolute and canonical, if the segment lists all that is in and below it;
/// else nothing. Costs a look at the parent of every folder.
std::optional<std::uint32_t> indexedFolderAt(const SegmentColumns& segment, std::string_view path);

/// Of each folder of a segment, whether a search looks into it: it lies in the scope, and the
/// account may search it and all between it and the scope folder. The scope folders and those above
/// them were judged when they were found.
class FolderTable {
 public:
  /// Borrows `segment`. Where scopes are nested, what is in the inner one is in that one alone.
  FolderTable(const SegmentColumns& segment, std::vector<IndexedScope> scopes,
              const ClassVerdicts& verdicts);

  /// Whether the entries of the folder are searched.
  bool isSearched(std::uint32_t folder) const { return isSearched_[folder] != 0; }

  /// Of each folder that `segment`, which has these tables, names in its rows, whether its entries
  /// are searched: a byte, since every row looks it up.
  std::vector<std::uint8_t> searchedIn(const SegmentColumns& segment) const;

  /// The path of a folder that is searched, and of an entry called `name` in it; bytes.
  std::string pathOf(std::uint32_t folder) const;
  std::string pathOf(std::uint32_t folder, std::string_view name) const;

  /// Whether paths are in the same order as the canonical ones, by their bytes.
  bool keepsPathOrder() const { return keepsPathOrder_; }

 private:
  const SegmentColumns& segment_;
  std::vector<IndexedScope> scopes_;
  std::vector<std::uint8_t> isSearched_;  // by folder
  std::vector<std::uint32_t> scopeOf_;    // by folder: which scope, of those that are searched
  bool keepsPathOrder_ = true;
};

}  // namespace vt
