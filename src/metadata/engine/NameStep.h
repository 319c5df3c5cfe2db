#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "metadata/engine/SubstringScanner.h"
#include "metadata/engine/TermStep.h"
#include "metadata/query/FoldedPattern.h"
#include "metadata/query/TextMatcher.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// A comparison of names with a text. Looks for what the text requires of the folded names, in many
/// of them at once; where that does not decide, the text is compared with the names it leaves.
class NameStep final : public TermStep {
 public:
  /// Borrows `segment`.
  NameStep(const SegmentColumns& segment, const std::string& pattern, std::uint8_t modifiers);

  void narrow(RowSet& rows) const override;
  std::uint64_t cost() const override;
  bool asksEachRow() const override { return !scanner_; }

 private:
  bool isSatisfiedBy(std::size_t row) const;

  const SegmentColumns& segment_;
  query::FoldedPattern folded_;
  std::optional<query::TextMatcher> matcher_;  // where the folded name does not decide
  std::optional<SubstringScanner> scanner_;    // where anything is required of it
};

}  // namespace vt
