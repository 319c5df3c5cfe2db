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
    steps.reserve(counts_.size());
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

void remove(const Bitmap& dead, RowSet& rows) {
  RowSet removed = RowSet::all(dead.size());
  removed.keepOnly(dead);
  rows.remove(removed);
}

/// The rows that the query finds among those that are searched, without the `dead` ones, which may
/// be nullptr as `counts` may.
std::vector<std::uint32_t> rowsFound(const QueryPlan& plan, const SearchedRows& searched,
                                     const Bitmap* dead, RowSet rows, StepCounts* counts) {
  QueryPlan::Watch watch;
  if (counts != nullptr) {
    watch = [&](const query::Term& term, std::size_t asked, std::size_t left) {
      counts->add(&term, asked, left);
    };
    // Rows that count no more are in nobody's way until the end, but they are not to be told of.
    if (dead != nullptr) remove(*dead, rows);
  }
  // Two look-ups for a row: less than asking it anything, more than finding names among many.
  const bool isSearchedFirst = plan.asksEachRow();
  if (isSearchedFirst) {
    const std::size_t asked = counts != nullptr ? rows.count() : 0;
    rows.keepIf([&](std::size_t row) { return searched.contains(row); });
    if (counts != nullptr) counts->add(/*term=*/nullptr, asked, rows.count());
  }
  rows = plan.rowsAmong(std::move(rows), watch);
  if (dead != nullptr) remove(*dead, rows);
  std::vector<std::uint32_t> found;
  found.reserve(rows.count());
  rows.forEach([&](std::size_t row) { found.push_back(static_cast<std::uint32_t>(row)); });
  if (isSearchedFirst) return found;
  const std::size_t asked = found.size();
  searched.narrow(found);
  if (counts != nullptr) counts->add(/*term=*/nullptr, asked, found.size());
  return found;
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
    std::vector<std::uint32_t> found =
        rowsFound(plan, part.searched, isBase && columns.deadCount > 0 ? &columns.dead : nullptr,
                  RowSet::all(part.segment.rowCount()), steps != nullptr ? &counts : nullptr);
    if (isBase) {
      rows_ = std::move(found);
    } else {
      newer = std::move(found);
      for (std::uint32_t& row : newer) row += static_cast<std::uint32_t>(part.firstRow);
    }
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
