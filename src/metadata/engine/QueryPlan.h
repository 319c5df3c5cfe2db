#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "metadata/engine/RowSet.h"
#include "metadata/engine/TermStep.h"
#include "metadata/query/Query.h"

namespace vt {

/// A query as operations on sets of rows: each term narrows a set, and what joins the terms decides
/// which set that is, so that what a cheap term has left out is not looked at by a dear one.
class QueryPlan {
 public:
  using StepMaker = std::function<std::unique_ptr<TermStep>(const query::Term& term)>;

  /// Borrows `query` for its own life.
  QueryPlan(const query::Query& query, const StepMaker& makeStep);

  /// Is told of each term that was put to rows how many these were and how many are left.
  using Watch = std::function<void(const query::Term& term, std::size_t asked, std::size_t left)>;

  /// Those of `rows` that satisfy the query. `watch` may be empty.
  RowSet rowsAmong(RowSet rows, const Watch& watch = {}) const;

  /// Whether a term looks at each row by itself.
  bool asksEachRow() const;

 private:
  const query::Query& query_;
  std::vector<std::unique_ptr<TermStep>> steps_;      // by term
  std::vector<std::vector<std::uint32_t>> children_;  // of each node, the cheapest first
};

}  // namespace vt
