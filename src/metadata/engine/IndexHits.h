#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "metadata/engine/ClassVerdicts.h"
#include "metadata/engine/FolderTable.h"
#include "metadata/engine/IndexedContents.h"
#include "metadata/engine/IndexedFiles.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/engine/SearchedRows.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/Query.h"
#include "metadata/query/TimeValue.h"
#include "metadata/rights/AccessJudge.h"

namespace vt {

/// What a search of the index found: rows in order, whose values are told when they are asked for.
/// Holds on to the segment, so a newer generation takes nothing away.
class IndexHits {
 public:
  /// One step of a search: what rows had to be, of how many, and how many were.
  struct Step {
    std::string text;
    std::size_t asked = 0;
    std::size_t left = 0;
  };

  /// Searches `scopes` for what satisfies the query and the judged account may read. Without
  /// `contents`, which may be nullptr, no file has text or attributes that stand in it. `tables`
  /// must outlive the hits; the rest is borrowed for the call. Tells its steps in order in `steps`
  /// unless that is nullptr.
  IndexHits(std::shared_ptr<const OpenIndex> index, std::shared_ptr<const IndexedContents> contents,
            const TypeTables& tables, std::vector<IndexedScope> scopes, const AccessJudge& judge,
            const query::Query& query, const query::AttributeSchema& schema,
            const query::EvaluationContext& context, std::vector<Step>* steps = nullptr);
  IndexHits(const IndexHits&) = delete;
  IndexHits& operator=(const IndexHits&) = delete;

  /// Newest modification first, equal ones by the bytes of their paths.
  std::size_t size() const { return rows_.size(); }
  std::size_t rowAt(std::size_t index) const { return rows_[index]; }
  const IndexedFiles& files() const { return files_; }
  /// What stands in the files; nullptr when nobody knows, or the query did not ask for it.
  const IndexedContents* contents() const { return contents_.get(); }
  /// Has values told from contents of the same index that the query did not ask for.
  void setContents(std::shared_ptr<const IndexedContents> contents) {
    contents_ = std::move(contents);
  }
  const OpenIndex& index() const { return *index_; }
  std::span<const std::uint32_t> rows() const { return rows_; }
  /// How many files that the account may read, in the scopes, were not looked into yet: what they
  /// hold is not found.
  std::size_t pendingCount() const;

  /// Has the processor fetch what will be told of the hits after `index`, since who asks for one
  /// mostly asks for those too: the rows of hits are far apart in every column.
  void prefetchAfter(std::size_t index) const;
  /// The same for who asks for nothing but dates and types, one hit after the other.
  void prefetchDateAndTypeAfter(std::size_t index) const;

  /// Puts the hits in the order of `order`, which holds each index once.
  void reorder(const std::vector<std::size_t>& order);

 private:
  /// Rows of one segment, as a search goes through them.
  struct Part {
    const SegmentColumns& segment;
    std::size_t firstRow;  ///< the number that its first row has here
    SearchedRows searched;
  };

  std::string pathAt(std::uint32_t row) const {
    return folders_.pathOf(files_.folder(row), files_.name(row));
  }
  /// Puts rows of the delta among those of the base that are there.
  void mergeIn(const std::vector<std::uint32_t>& newer, bool comparesPaths);
  void sortEquallyOldByPath();

  std::shared_ptr<const OpenIndex> index_;
  std::shared_ptr<const IndexedContents> contents_;
  ClassVerdicts verdicts_;
  FolderTable folders_;
  IndexedFiles files_;
  std::vector<Part> parts_;
  std::vector<std::uint32_t> rows_;
};

}  // namespace vt
