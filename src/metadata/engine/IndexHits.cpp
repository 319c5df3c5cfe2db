#include "metadata/engine/IndexHits.h"

#include <algorithm>
#include <string>
#include <utility>

#include "metadata/engine/QueryPlan.h"
#include "metadata/engine/TermCompiler.h"
#include "metadata/query/QueryPrinter.h"

namespace vt {
namespace {

/// Counts rows by term over several segments.
class StepCounts {
 public:
  /// Without a term: the rows that may be seen.
  void add(const query::Term* term, std::size_t asked, std::size_t left) {
    const auto known = std::ranges::find(counts_, term, &Count::term);
    Count& count = known != counts_.end() ? *known : counts_.emplace_back(Count{term});
    count.asked += asked;
    count.left += left;
  }

  std::vector<IndexHits::Step> steps() const {
    std::vector<IndexHits::Step> steps;
    for (const Count& count : counts_) {
      steps.push_back(
          {count.term != nullptr ? query::printTerm(*count.term) : "in the folders, and readable",
           count.asked, count.left});
    }
    return steps;
  }

 private:
  struct Count {
    const query::Term* term;
    std::size_t asked = 0;
    std::size_t left = 0;
  };

  std::vector<Count> counts_;  // in the order in which they were asked
};

void removeDead(const GenerationColumns& columns, RowSet& rows) {
  RowSet dead = RowSet::all(columns.dead.size());
  dead.keepOnly(columns.dead);
  rows.remove(dead);
}

}  // namespace

IndexHits::IndexHits(std::shared_ptr<const OpenIndex> index,
                     std::shared_ptr<const IndexedContents> contents, const TypeTables& tables,
                     std::vector<IndexedScope> scopes, const AccessJudge& judge,
                     const query::Query& query, const query::AttributeSchema& schema,
                     const query::EvaluationContext& context, std::vector<Step>* steps)
    : index_(std::move(index)),
      contents_(std::move(contents)),
      verdicts_(index_->folders(), judge),
      folders_(index_->folders(), std::move(scopes), verdicts_),
      files_(index_->columns, index_->types, tables, folders_, verdicts_) {
  const GenerationColumns& columns = index_->columns;
  const auto addPart = [&](const SegmentColumns& segment, std::size_t firstRow) {
    parts_.push_back({segment, firstRow, SearchedRows(segment, folders_, verdicts_)});
  };
  addPart(columns.base, 0);
  if (columns.delta.rowCount() > 0) addPart(columns.delta, columns.base.rowCount());
  TermCompiler::Finds finds;
  StepCounts counts;
  std::vector<std::uint32_t> newer;
  for (const Part& part : parts_) {
    const bool isBase = part.firstRow == 0;
    const TermCompiler compiler(part.segment, part.firstRow, tables, index_->types, schema, context,
                                files_, contents_.get(), finds);
    const QueryPlan plan(query, [&](const query::Term& term) { return compiler.stepOf(term); });
    RowSet rows = RowSet::all(part.segment.rowCount());
    // Rows that count no more are in nobody's way until the end, but they are not to be told of.
    if (isBase && steps != nullptr && columns.deadCount > 0) removeDead(columns, rows);
    const auto keepReadable = [&] {
      const std::size_t asked = steps != nullptr ? rows.count() : 0;
      rows.keepIf([&](std::size_t row) { return part.searched.contains(row); });
      if (isBase && columns.deadCount > 0) removeDead(columns, rows);
      if (steps != nullptr) counts.add(nullptr, asked, rows.count());
    };
    QueryPlan::Watch watch;
    if (steps != nullptr) {
      watch = [&](const query::Term& term, std::size_t asked, std::size_t left) {
        counts.add(&term, asked, left);
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
    std::vector<std::uint32_t>& found = isBase ? rows_ : newer;
    found.reserve(rows.count());
    rows.forEach(
        [&](std::size_t row) { found.push_back(static_cast<std::uint32_t>(part.firstRow + row)); });
  }
  if (steps != nullptr) *steps = counts.steps();
  const bool keepsOrder = folders_.keepsPathOrder() && !columns.hasMovedFolders;
  if (!newer.empty()) mergeIn(newer, keepsOrder);
  if (!keepsOrder) sortEquallyOldByPath();
}

std::size_t IndexHits::pendingCount() const {
  if (contents_ == nullptr || !contents_->hasPending()) return 0;
  std::size_t count = 0;
  for (const Part& part : parts_) {
    for (std::size_t row = 0; row < part.segment.rowCount(); ++row) {
      if (contents_->isPending(part.firstRow + row) && part.searched.contains(row)) ++count;
    }
  }
  return count;
}

void IndexHits::mergeIn(const std::vector<std::uint32_t>& newer, bool comparesPaths) {
  const auto isBefore = [&](std::uint32_t a, std::uint32_t b) {
    const Date first = files_.modified(a);
    const Date second = files_.modified(b);
    if (first != second) return first > second;
    return comparesPaths && pathAt(a) < pathAt(b);
  };
  std::vector<std::uint32_t> merged;
  merged.reserve(rows_.size() + newer.size());
  auto from = rows_.cbegin();
  for (const std::uint32_t row : newer) {
    const auto place = std::upper_bound(from, rows_.cend(), row, isBefore);
    merged.insert(merged.end(), from, place);
    merged.push_back(row);
    from = place;
  }
  merged.insert(merged.end(), from, rows_.cend());
  rows_ = std::move(merged);
}

void IndexHits::sortEquallyOldByPath() {
  for (auto first = rows_.begin(); first != rows_.end();) {
    const Date modified = files_.modified(*first);
    const auto last = std::find_if(first + 1, rows_.end(), [&](std::uint32_t row) {
      return files_.modified(row) != modified;
    });
    std::vector<std::pair<std::string, std::uint32_t>> byPath;
    if (last - first > 1) {
      for (auto at = first; at != last; ++at) byPath.emplace_back(pathAt(*at), *at);
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
  const SegmentColumns& segment = index_->columns.base;
  const auto isOfBase = [&](std::uint32_t row) { return row < segment.rowCount(); };
  // The few rows of the delta are near each other anyway.
  if (index + kOffsetsAhead < rows_.size() && isOfBase(rows_[index + kOffsetsAhead])) {
    segment.foldedNames.prefetchOffset(rows_[index + kOffsetsAhead]);
    segment.otherNames.prefetchOffset(rows_[index + kOffsetsAhead]);
  }
  if (index + kHitsAhead < rows_.size() && isOfBase(rows_[index + kHitsAhead])) {
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
  const SegmentColumns& segment = index_->columns.base;
  if (row >= segment.rowCount()) return;  // the few rows of the delta are near each other anyway
  __builtin_prefetch(&segment.modified[row]);
  __builtin_prefetch(&segment.types[row]);
}

void IndexHits::reorder(const std::vector<std::size_t>& order) {
  std::vector<std::uint32_t> sorted;
  sorted.reserve(rows_.size());
  for (const std::size_t index : order) sorted.push_back(rows_[index]);
  rows_ = std::move(sorted);
}

}  // namespace vt
