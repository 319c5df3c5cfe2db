#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "metadata/engine/RowSet.h"

namespace vt {

/// One term of a query, ready to be asked of many rows at once.
class TermStep {
 public:
  virtual ~TermStep() = default;

  /// Takes out the rows that do not satisfy the term; `!=` counts as `==` here.
  virtual void narrow(RowSet& rows) const = 0;
  /// About what a row costs, in nanoseconds: of two terms the cheaper is asked first.
  virtual std::uint64_t cost() const = 0;
  /// Whether it looks at each row by itself, so that rows are better left out beforehand.
  virtual bool asksEachRow() const { return false; }
};

/// A term that a test of the row's number decides.
template <class Test>
class TestStep final : public TermStep {
 public:
  TestStep(std::uint64_t cost, Test test) : cost_(cost), test_(std::move(test)) {}

  void narrow(RowSet& rows) const override { rows.keepIf(test_); }
  std::uint64_t cost() const override { return cost_; }

 private:
  std::uint64_t cost_;
  Test test_;
};

template <class Test>
std::unique_ptr<TermStep> stepThatTests(std::uint64_t cost, Test test) {
  return std::make_unique<TestStep<Test>>(cost, std::move(test));
}

/// A term that rows from `first` to before `last` satisfy.
class RangeStep final : public TermStep {
 public:
  RangeStep(std::size_t first, std::size_t last) : first_(first), last_(last) {}

  void narrow(RowSet& rows) const override { rows.keepRange(first_, last_); }
  std::uint64_t cost() const override { return 0; }

 private:
  std::size_t first_;
  std::size_t last_;
};

}  // namespace vt
