#include "vistaro/QueryOutline.h"

#include <utility>

#include "metadata/query/QueryPrinter.h"

namespace vt::tool {
namespace {

using query::NodeKind;

std::string textOf(const query::Query& query, const query::Node& node) {
  switch (node.kind) {
    case NodeKind::kTrue:
      return "true";
    case NodeKind::kFalse:
      return "false";
    case NodeKind::kTerm:
      return query::printTerm(query.terms()[node.term]);
    case NodeKind::kNot:
      return "!";
    case NodeKind::kAnd:
      return "&&";
    case NodeKind::kOr:
      return "||";
  }
  return {};
}

}  // namespace

std::vector<OutlineLine> outlineOf(const query::Query& query) {
  std::vector<OutlineLine> lines;
  std::vector<std::pair<std::uint32_t, std::size_t>> pending = {{query.root(), 0}};
  while (!pending.empty()) {  // and no recursion, however deep the query is
    const auto [at, depth] = pending.back();
    pending.pop_back();
    const query::Node& node = query.nodes()[at];
    lines.push_back({depth, textOf(query, node)});
    if (node.nextSibling != query::kNoNode && depth > 0) {
      pending.emplace_back(node.nextSibling, depth);
    }
    if (node.firstChild != query::kNoNode) pending.emplace_back(node.firstChild, depth + 1);
  }
  return lines;
}

}  // namespace vt::tool
