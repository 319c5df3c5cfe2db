#include "metadata/query/Query.h"

#include <utility>

namespace vt::query {

Query::Query(std::string text, std::vector<Node> nodes, std::vector<Term> terms, std::uint32_t root,
             std::vector<QueryWarning> warnings)
    : text_(std::move(text)),
      nodes_(std::move(nodes)),
      terms_(std::move(terms)),
      root_(root),
      warnings_(std::move(warnings)) {}

const std::string& attributeOf(const Term& term) {
  return std::visit([](const auto& t) -> const std::string& { return t.attribute; }, term);
}

bool isNegated(const Term& term) {
  const auto* comparison = std::get_if<Comparison>(&term);
  return comparison != nullptr && comparison->operation == Operator::kNotEqual;
}

bool operator==(const Query& a, const Query& b) {
  // Both trees are walked in step: down to the first child, else on to the next sibling of the
  // nearest ancestor that has one. Parents need no comparison, since the steps agree so far.
  std::uint32_t x = a.root_;
  std::uint32_t y = b.root_;
  for (;;) {
    const Node* m = &a.nodes_[x];
    const Node* n = &b.nodes_[y];
    if (m->kind != n->kind) return false;
    if (m->kind == NodeKind::kTerm && !(a.terms_[m->term] == b.terms_[n->term])) return false;
    if ((m->firstChild == kNoNode) != (n->firstChild == kNoNode)) return false;
    if (m->firstChild != kNoNode) {
      x = m->firstChild;
      y = n->firstChild;
      continue;
    }
    while (x != a.root_) {
      m = &a.nodes_[x];
      n = &b.nodes_[y];
      if ((m->nextSibling == kNoNode) != (n->nextSibling == kNoNode)) return false;
      if (m->nextSibling != kNoNode) break;
      x = m->parent;
      y = n->parent;
    }
    if (x == a.root_ || y == b.root_) return x == a.root_ && y == b.root_;
    x = m->nextSibling;
    y = n->nextSibling;
  }
}

}  // namespace vt::query
