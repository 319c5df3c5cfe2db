#include "metadata/engine/ContentStep.h"

#include <algorithm>

namespace vt {
namespace {

// Some milliseconds for 100,000 files, however few rows are left: after names and numbers, before
// what is asked of each row.
constexpr std::uint64_t kFindingCost = 100;

}  // namespace

std::uint64_t ContentStep::cost() const { return kFindingCost; }

void ContentStep::narrow(RowSet& rows) const {
  if (rows.isEmpty()) return;
  if (!*found_) *found_ = find_(contents_);
  const Bitmap& found = **found_;
  rows.keepIf([&](std::size_t row) { return contents_.isIn(found, firstRow_ + row); });
}

std::uint64_t FileFirstStep::cost() const {
  return passing_->cost() + telling_->cost() + otherwise_->cost();
}

void FileFirstStep::narrow(RowSet& rows) const {
  RowSet found = rows;
  passing_->narrow(found);
  RowSet told = rows;
  telling_->narrow(told);
  rows.remove(told);
  otherwise_->narrow(rows);
  rows.add(found);
}

void AnyStep::narrow(RowSet& rows) const {
  RowSet found = RowSet::none(rows.size());
  for (const auto& step : steps_) {
    RowSet some = rows;
    step->narrow(some);
    rows.remove(some);
    found.add(some);
  }
  rows = std::move(found);
}

std::uint64_t AnyStep::cost() const {
  std::uint64_t cost = 0;
  for (const auto& step : steps_) cost += step->cost();
  return cost;
}

bool AnyStep::asksEachRow() const {
  return std::ranges::any_of(steps_, [](const auto& step) { return step->asksEachRow(); });
}

}  // namespace vt
