#include "metadata/query/QueryOrder.h"

#include <algorithm>

namespace vt::query {

std::vector<std::vector<std::uint32_t>> childrenByCost(
    const Query& query, FunctionRef<std::uint64_t(const Term&)> costOf) {
  const std::vector<Node>& nodes = query.nodes();
  std::vector<std::uint32_t> order;  // each node after its parent
  for (std::vector<std::uint32_t> open{query.root()}; !open.empty();) {
    const std::uint32_t at = open.back();
    open.pop_back();
    order.push_back(at);
    for (std::uint32_t child = nodes[at].firstChild; child != kNoNode;
         child = nodes[child].nextSibling) {
      open.push_back(child);
    }
  }
  std::vector<std::uint64_t> costs(nodes.size(), 0);
  std::vector<std::vector<std::uint32_t>> children(nodes.size());
  for (auto at = order.rbegin(); at != order.rend(); ++at) {
    const Node& node = nodes[*at];
    if (node.kind == NodeKind::kTerm) costs[*at] = costOf(query.terms()[node.term]);
    for (std::uint32_t child = node.firstChild; child != kNoNode;
         child = nodes[child].nextSibling) {
      costs[*at] += costs[child];
      children[*at].push_back(child);
    }
    std::stable_sort(children[*at].begin(), children[*at].end(),
                     [&](std::uint32_t a, std::uint32_t b) { return costs[a] < costs[b]; });
  }
  return children;
}

}  // namespace vt::query
