#include "metadata/engine/IndexHits.h"

#include <algorithm>
#include <string>
#include <utility>

#include "metadata/engine/QueryPlan.h"
#include "metadata/engine/TermCompiler.h"
#include "metadata/query/QueryPrinter.h"

namespace vt {

IndexHits::IndexHits(std::shared_ptr<const OpenIndex> index,
                     std::shared_ptr<const IndexedContents> contents, const TypeTables& tables,
                     std::vector<IndexedScope> scopes, const AccessJudge& judge,
                     const query::Query& query, const query::AttributeSchema& schema,
                     const query::EvaluationContext& context, std::vector<Step>* steps)
    : index_(std::move(index)),
      contents_(std::move(contents)),
      verdicts_(index_->segment, judge),
      folders_(index_->segment, std::move(scopes), verdicts_),
      files_(index_->segment, index_->types, tables, folders_, verdicts_) {
  const TermCompiler compiler(index_->segment, tables, index_->types, schema, context, files_,
                              contents_.get());
  const QueryPlan plan(query, [&](const query::Term& term) { return compiler.stepOf(term); });
  RowSet rows = RowSet::all(index_->segment.rowCount());
  const auto keepReadable = [&] {
    const std::size_t asked = steps != nullptr ? rows.count() : 0;
    rows.keepIf([&](std::size_t row) { return isReadable(row); });
    if (steps != nullptr) steps->push_back({"in the folders, and readable", asked, rows.count()});
  };
  QueryPlan::Watch watch;
  if (steps != nullptr) {
    watch = [&](const query::Term& term, std::size_t asked, std::size_t left) {
      steps->push_back({query::printTerm(term), asked, left});
    };
  }
  // Two look-ups for a row: less than asking it anything, more than finding names among many.
  if (plan.asksEachRow()) {
    keepReadable();
    rows = plan.rowsAmong(std::move(rows), watch);
  } else {
    rows = plan.rowsAmong(std::move(rows), watch);
    keepReadable();
  }
  rows_.reserve(rows.count());
  rows.forEach([&](std::size_t row) { rows_.push_back(static_cast<std::uint32_t>(row)); });
  if (!folders_.keepsPathOrder()) sortEquallyOldByPath();
}

bool IndexHits::isReadable(std::size_t row) const {
  return folders_.isSearched(index_->segment.folderOf(row)) &&
         verdicts_.mayRead(index_->segment.classOf(row));
}

std::size_t IndexHits::pendingCount() const {
  if (contents_ == nullptr || !contents_->hasPending()) return 0;
  std::size_t count = 0;
  for (std::size_t row = 0; row < index_->segment.rowCount(); ++row) {
    if (contents_->isPending(row) && isReadable(row)) ++count;
  }
  return count;
}

void IndexHits::sortEquallyOldByPath() {
  const SegmentColumns& segment = index_->segment;
  for (auto first = rows_.begin(); first != rows_.end();) {
    const Date modified = segment.modifiedOf(*first);
    const auto last = std::find_if(first + 1, rows_.end(), [&](std::uint32_t row) {
      return segment.modifiedOf(row) != modified;
    });
    std::vector<std::pair<std::string, std::uint32_t>> byPath;
    if (last - first > 1) {
      for (auto at = first; at != last; ++at) {
        byPath.emplace_back(folders_.pathOf(segment.folderOf(*at), segment.name(*at)), *at);
      }
      std::ranges::sort(byPath);
      std::ranges::transform(byPath, first, [](const auto& entry) { return entry.second; });
    }
    first = last;
  }
}

void IndexHits::prefetchAfter(std::size_t index) const {
  // Names are found through their offsets, which must have come by then.
  constexpr std::size_t kHitsAhead = 6;
  constexpr std::size_t kOffsetsAhead = 12;
  const SegmentColumns& segment = index_->segment;
  if (index + kOffsetsAhead < rows_.size()) {
    segment.foldedNames.prefetchOffset(rows_[index + kOffsetsAhead]);
    segment.otherNames.prefetchOffset(rows_[index + kOffsetsAhead]);
  }
  if (index + kHitsAhead < rows_.size()) {
    const std::uint32_t row = rows_[index + kHitsAhead];
    segment.foldedNames.prefetchText(row);
    segment.otherNames.prefetchText(row);
    __builtin_prefetch(&segment.modified[row]);
    __builtin_prefetch(&segment.accessed[row]);
    __builtin_prefetch(&segment.sizes[row]);
    __builtin_prefetch(&segment.types[row]);
    __builtin_prefetch(&segment.folders[row]);
  }
}

void IndexHits::prefetchDateAndTypeAfter(std::size_t index) const {
  // They are told in some nanoseconds each, and memory takes a hundred.
  constexpr std::size_t kHitsAhead = 16;
  if (index + kHitsAhead >= rows_.size()) return;
  const std::uint32_t row = rows_[index + kHitsAhead];
  __builtin_prefetch(&index_->segment.modified[row]);
  __builtin_prefetch(&index_->segment.types[row]);
}

void IndexHits::reorder(const std::vector<std::size_t>& order) {
  std::vector<std::uint32_t> sorted;
  sorted.reserve(rows_.size());
  for (const std::size_t index : order) sorted.push_back(rows_[index]);
  rows_ = std::move(sorted);
}

}  // namespace vt
