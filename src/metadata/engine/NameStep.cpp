#include "metadata/engine/NameStep.h"

#include <algorithm>
#include <utility>

namespace vt {
namespace {

// Scanning the names of this many rows costs what looking at one row by itself does.
constexpr std::size_t kRowsScannedInsteadOfOne = 10;

}  // namespace

NameStep::NameStep(const SegmentColumns& segment, const std::string& pattern,
                   std::uint8_t modifiers)
    : segment_(segment), folded_(query::foldedPatternOf(pattern, modifiers)) {
  if (!folded_.decides) {
    matcher_.emplace(pattern, modifiers, query::TextMatcher::Subject::kValue);
  }
  if (!folded_.literal.empty()) scanner_.emplace(folded_.literal);
}

std::uint64_t NameStep::cost() const { return scanner_ ? 8 : 80; }

bool NameStep::isSatisfiedBy(std::size_t row) const {
  return folded_.admits(segment_.foldedNames[row]) &&
         (!matcher_ || matcher_->matches(segment_.name(row)));
}

void NameStep::narrow(RowSet& rows) const {
  const std::size_t count = rows.count();
  if (!scanner_ || count * kRowsScannedInsteadOfOne < rows.last() - rows.first()) {
    rows.keepIf([&](std::size_t row) { return isSatisfiedBy(row); });
    return;
  }
  const bool isDecidedByFinding = !matcher_ && folded_.isOpenAtStart && folded_.isOpenAtEnd;
  Bitmap found(rows.size());
  const TextColumn& names = segment_.foldedNames;
  const std::string_view text = names.text().substr(0, names.offsetOf(rows.last()));
  std::size_t row = rows.first();
  for (std::size_t at = scanner_->find(text, names.offsetOf(row)); at != std::string_view::npos;
       at = scanner_->find(text, at)) {
    row = names.numberAt(at, row);
    if (rows.contains(row) && (isDecidedByFinding || isSatisfiedBy(row))) found.add(row);
    if (row + 1 >= rows.last()) break;
    // Forward in any case, whatever a damaged segment says of offsets.
    at = std::max(at + 1, names.offsetOf(row + 1));
  }
  rows.keepOnly(std::move(found));
}

}  // namespace vt
