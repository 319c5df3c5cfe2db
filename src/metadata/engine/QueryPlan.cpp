#include "metadata/engine/QueryPlan.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "metadata/query/QueryOrder.h"

namespace vt {
namespace {

using query::Node;
using query::NodeKind;

/// A node that is being asked.
struct Frame {
  std::uint32_t node;
  RowSet open;            // rows that are still to be decided
  RowSet found;           // of ||: those that a child has accepted
  std::size_t asked = 0;  // how many children were
};

void narrowByTerm(const TermStep& step, bool isNegated, RowSet& rows) {
  if (!isNegated) {
    step.narrow(rows);
    return;
  }
  RowSet equal = rows;
  step.narrow(equal);
  rows.remove(equal);
}

}  // namespace

QueryPlan::QueryPlan(const query::Query& query, const StepMaker& makeStep) : query_(query) {
  steps_.reserve(query.terms().size());
  for (const query::Term& term : query.terms()) steps_.push_back(makeStep(term));
  const query::Term* const firstTerm = query.terms().data();
  children_ = query::childrenByCost(query, [&](const query::Term& term) {
    return steps_[static_cast<std::size_t>(&term - firstTerm)]->cost();
  });
}

bool QueryPlan::asksEachRow() const {
  return std::ranges::any_of(steps_, [](const auto& step) { return step->asksEachRow(); });
}

RowSet QueryPlan::rowsAmong(RowSet rows, const Watch& watch) const {
  std::vector<Frame> frames;  // and no recursion, however deep the query is
  const auto enter = [&](std::uint32_t node, RowSet open) {
    RowSet nothing = RowSet::none(open.size());
    frames.push_back({node, std::move(open), std::move(nothing)});
  };
  RowSet answer = RowSet::none(rows.size());  // of the node that was finished last
  enter(query_.root(), std::move(rows));
  while (!frames.empty()) {
    Frame& frame = frames.back();
    const Node& node = query_.nodes()[frame.node];
    const std::vector<std::uint32_t>& below = children_[frame.node];
    if (frame.asked > 0) {
      if (node.kind == NodeKind::kAnd) {
        frame.open = std::exchange(answer, RowSet::none(answer.size()));
      } else {
        frame.open.remove(answer);
        if (node.kind == NodeKind::kOr) frame.found.add(answer);
      }
    }
    const bool joins =
        node.kind == NodeKind::kNot || node.kind == NodeKind::kAnd || node.kind == NodeKind::kOr;
    if (joins && frame.asked < below.size() && !frame.open.isEmpty()) {
      const std::uint32_t child = below[frame.asked++];
      enter(child, frame.open);  // the frame is gone from here on: the vector may have moved
      continue;
    }
    switch (node.kind) {
      case NodeKind::kFalse:
        frame.open = RowSet::none(frame.open.size());
        break;
      case NodeKind::kTerm: {
        const query::Term& term = query_.terms()[node.term];
        const std::size_t asked = watch ? frame.open.count() : 0;
        narrowByTerm(*steps_[node.term], isNegated(term), frame.open);
        if (watch) watch(term, asked, frame.open.count());
        break;
      }
      case NodeKind::kOr:
        frame.open = std::move(frame.found);
        break;
      case NodeKind::kTrue:
      case NodeKind::kNot:
      case NodeKind::kAnd:
        break;
    }
    answer = std::move(frame.open);
    frames.pop_back();
  }
  return answer;
}

}  // namespace vt
