#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "metadata/engine/IndexedContents.h"
#include "metadata/engine/TermStep.h"

namespace vt {

/// A term about what is in files: the catalogue finds all contents that satisfy it, and rows are
/// kept that have one of them.
class ContentStep final : public TermStep {
 public:
  using Find = std::function<Bitmap(const IndexedContents& contents)>;

  /// Borrows `contents`.
  ContentStep(const IndexedContents& contents, Find find)
      : contents_(contents), find_(std::move(find)) {}

  void narrow(RowSet& rows) const override;
  std::uint64_t cost() const override;

 private:
  const IndexedContents& contents_;
  Find find_;
};

/// A term about an attribute that a file may tell itself; of other files another step tells it.
class FileFirstStep final : public TermStep {
 public:
  /// `findTold` finds the contents that tell the attribute, `findPassing` those of them that
  /// satisfy the term. Borrows `contents`.
  FileFirstStep(const IndexedContents& contents, ContentStep::Find findTold,
                ContentStep::Find findPassing, std::unique_ptr<TermStep> otherwise)
      : contents_(contents),
        findTold_(std::move(findTold)),
        findPassing_(std::move(findPassing)),
        otherwise_(std::move(otherwise)) {}

  void narrow(RowSet& rows) const override;
  std::uint64_t cost() const override;
  bool asksEachRow() const override { return otherwise_->asksEachRow(); }

 private:
  const IndexedContents& contents_;
  ContentStep::Find findTold_;
  ContentStep::Find findPassing_;
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
