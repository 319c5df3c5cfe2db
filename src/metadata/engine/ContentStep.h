#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "metadata/engine/IndexedContents.h"
#include "metadata/engine/TermStep.h"

namespace vt {

/// The contents that satisfy a term, once they have been looked for.
using SharedFind = std::shared_ptr<std::optional<Bitmap>>;

/// A term about what is in files: the catalogue finds all contents that satisfy it, and rows are
/// kept that have one of them.
class ContentStep final : public TermStep {
 public:
  using Find = std::function<Bitmap(const IndexedContents& contents)>;

  /// Borrows `contents`, which knows the first row of the segment as `firstRow`. What was found is
  /// kept in `found`, which is not nullptr, and taken from there.
  ContentStep(const IndexedContents& contents, std::size_t firstRow, Find find, SharedFind found)
      : contents_(contents),
        firstRow_(firstRow),
        find_(std::move(find)),
        found_(std::move(found)) {}

  void narrow(RowSet& rows) const override;
  std::uint64_t cost() const override;

 private:
  const IndexedContents& contents_;
  std::size_t firstRow_;
  Find find_;
  SharedFind found_;
};

/// A term about an attribute that a file may tell itself; of other files another step tells it.
class FileFirstStep final : public TermStep {
 public:
  /// `passing` keeps the rows whose files satisfy the term themselves, `telling` those whose files
  /// tell the attribute.
  FileFirstStep(std::unique_ptr<TermStep> passing, std::unique_ptr<TermStep> telling,
                std::unique_ptr<TermStep> otherwise)
      : passing_(std::move(passing)),
        telling_(std::move(telling)),
        otherwise_(std::move(otherwise)) {}

  void narrow(RowSet& rows) const override;
  std::uint64_t cost() const override;
  bool asksEachRow() const override { return otherwise_->asksEachRow(); }

 private:
  std::unique_ptr<TermStep> passing_;
  std::unique_ptr<TermStep> telling_;
  std::unique_ptr<TermStep> otherwise_;
};

/// A term that rows satisfy which one of several steps keeps.
class AnyStep final : public TermStep {
 public:
  explicit AnyStep(std::vector<std::unique_ptr<TermStep>> steps) : steps_(std::move(steps)) {}

  void narrow(RowSet& rows) const override;
  std::uint64_t cost() const override;
  bool asksEachRow() const override;

 private:
  std::vector<std::unique_ptr<TermStep>> steps_;
};

}  // namespace vt
