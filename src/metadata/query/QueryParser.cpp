#include "metadata/query/QueryParser.h"

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "metadata/query/QueryLexer.h"
#include "metadata/query/QuerySemantics.h"

namespace vt::query {

namespace {

constexpr std::string_view kOperandExpected =
    "an attribute, true, false, InRange, ! or an opening parenthesis";

/// Builds the nodes of a tree from the leaves up.
class TreeBuilder {
 public:
  std::uint32_t addLeaf(NodeKind kind, std::uint32_t term = 0) {
    nodes_.push_back({.kind = kind, .term = term});
    return static_cast<std::uint32_t>(nodes_.size() - 1);
  }

  std::uint32_t addNot(std::uint32_t child) {
    const std::uint32_t node = addLeaf(NodeKind::kNot);
    append(node, child);
    return node;
  }

  /// Joins two trees by && or ||. One that is joined the same way already is widened.
  std::uint32_t join(NodeKind kind, std::uint32_t left, std::uint32_t right) {
    if (nodes_[left].kind == kind) {
      if (nodes_[right].kind != kind) {
        append(left, right);
        return left;
      }
      for (std::uint32_t child = nodes_[right].firstChild; child != kNoNode;) {
        const std::uint32_t next = std::exchange(nodes_[child].nextSibling, kNoNode);
        append(left, child);
        child = next;
      }
      return left;
    }
    if (nodes_[right].kind == kind) {
      nodes_[left].parent = right;
      nodes_[left].nextSibling = std::exchange(nodes_[right].firstChild, left);
      return right;
    }
    const std::uint32_t node = addLeaf(kind);
    append(node, left);
    append(node, right);
    return node;
  }

  std::vector<Node> takeNodes() { return std::move(nodes_); }

 private:
  void append(std::uint32_t parent, std::uint32_t child) {
    Node& node = nodes_[parent];
    nodes_[child].parent = parent;
    if (node.lastChild == kNoNode) {
      node.firstChild = child;
    } else {
      nodes_[node.lastChild].nextSibling = child;
    }
    node.lastChild = child;
  }

  std::vector<Node> nodes_;
};

/// Operator precedence with stacks of its own, so that depth costs no stack of the process.
class Parser {
 public:
  Parser(std::string_view text, const AttributeSchema& schema)
      : text_(text), schema_(schema), lexer_(text) {}

  Result<Query, QueryError> parse() {
    checkSize();
    while (!lexer_.error()) {
      parseOperand();
      if (lexer_.error()) break;
      lexer_.skipBlanks();
      while (lexer_.take(")")) {
        closeParenthesis();
        lexer_.skipBlanks();
        if (lexer_.error()) return *lexer_.error();
      }
      if (lexer_.take("&&")) {
        reduceWhile(NodeKind::kAnd);
        pending_.push_back({Pending::kAnd});
      } else if (lexer_.take("||")) {
        reduceWhile(NodeKind::kOr);
        pending_.push_back({Pending::kOr});
      } else if (lexer_.atEnd()) {
        return finish();
      } else {
        lexer_.expect("&& or || or the end");
      }
    }
    return *lexer_.error();
  }

 private:
  enum class Pending : std::uint8_t { kParenthesis, kNot, kAnd, kOr };

  void checkSize() {
    lexer_.skipBlanks();
    if (text_.size() > kMaximumQueryBytes) {
      lexer_.fail(QueryErrorKind::kLimit, kMaximumQueryBytes, "at most 65536 bytes");
    } else if (lexer_.atEnd()) {
      lexer_.fail(QueryErrorKind::kEmpty, text_.size(), "a query");
    }
  }

  /// `!` and `(` as many as there are, then a term or a constant, and the `!` before it applied.
  void parseOperand() {
    for (;;) {
      lexer_.skipBlanks();
      const std::size_t start = lexer_.offset();
      if (lexer_.take("!")) {
        pending_.push_back(Pending::kNot);
      } else if (lexer_.take("(")) {
        pending_.push_back(Pending::kParenthesis);
      } else {
        break;
      }
      if (++nesting_ > kMaximumNesting) {
        return lexer_.fail(QueryErrorKind::kLimit, start, "at most 256 nested ! and parentheses");
      }
    }
    const std::size_t start = lexer_.offset();
    const std::optional<std::string_view> name = lexer_.takeName();
    if (!name) return lexer_.expect(kOperandExpected);
    if (*name == "true" || *name == "false") {
      operands_.push_back(tree_.addLeaf(*name == "true" ? NodeKind::kTrue : NodeKind::kFalse));
    } else {
      lexer_.skipBlanks();
      const bool isRange = (*name == "InRange" || *name == "inRange") && lexer_.take("(");
      std::optional<Term> term = isRange ? parseRange() : parseComparison(*name, start);
      if (!term) return;
      if (terms_.size() == kMaximumTerms) {
        return lexer_.fail(QueryErrorKind::kLimit, start, "at most 4096 comparisons");
      }
      operands_.push_back(
          tree_.addLeaf(NodeKind::kTerm, static_cast<std::uint32_t>(terms_.size())));
      terms_.push_back(std::move(*term));
    }
    applyNots();
  }

  std::optional<Term> parseComparison(std::string_view attribute, std::size_t attributeOffset) {
    const std::optional<Operator> operation = lexer_.takeOperator();
    if (!operation) {
      lexer_.expect("one of the operators ==, =, !=, <, >, <=, >=");
      return std::nullopt;
    }
    Comparison comparison{std::string(attribute), *operation, 0, {}};
    lexer_.skipBlanks();
    comparison.modifiers = lexer_.takeBracketModifiers();
    if (lexer_.error()) return std::nullopt;
    lexer_.skipBlanks();
    const std::size_t valueOffset = lexer_.offset();
    std::optional<Operand> value = takeValue(comparison.modifiers);
    if (!value) return std::nullopt;
    comparison.value = std::move(*value);

    const bool isEquality = *operation == Operator::kEqual || *operation == Operator::kNotEqual;
    if (!isEquality && !isOrderable(attribute, attributeOffset)) return std::nullopt;
    if (const auto problem = checkComparison(schema_, comparison)) {
      lexer_.fail(problem->kind, valueOffset, problem->expected);
      return std::nullopt;
    }
    warnIfUnknown(attribute, attributeOffset);
    return comparison;
  }

  /// What follows `InRange(`.
  std::optional<Term> parseRange() {
    lexer_.skipBlanks();
    const std::size_t attributeOffset = lexer_.offset();
    const std::optional<std::string_view> attribute = lexer_.takeName();
    if (!attribute) {
      lexer_.expect("an attribute");
      return std::nullopt;
    }
    Range range{std::string(*attribute), {}, {}};
    for (Operand* bound : {&range.low, &range.high}) {
      if (!takeComma()) return std::nullopt;
      const std::size_t boundOffset = lexer_.offset();
      std::uint8_t modifiers = 0;
      std::optional<Operand> value = takeValue(modifiers);
      if (!value) return std::nullopt;
      if (!isOrderable(*attribute, attributeOffset)) return std::nullopt;
      if (modifiers != 0) {
        lexer_.fail(QueryErrorKind::kValue, boundOffset, "a number or a time without modifiers");
        return std::nullopt;
      }
      const bool isTime = std::holds_alternative<TimeValue>(*value);
      if (!isTime && !numberOf(*value, /*allowsWords=*/false)) {
        lexer_.fail(QueryErrorKind::kValue, boundOffset, "a number or a time");
        return std::nullopt;
      }
      if (const auto problem = checkBound(schema_, *attribute, *value)) {
        lexer_.fail(problem->kind, boundOffset, problem->expected);
        return std::nullopt;
      }
      *bound = std::move(*value);
    }
    lexer_.skipBlanks();
    if (lexer_.startsWith(",")) {
      lexer_.fail(QueryErrorKind::kArity, lexer_.offset(), "a closing parenthesis");
      return std::nullopt;
    }
    if (!lexer_.take(")")) {
      lexer_.expect("a closing parenthesis");
      return std::nullopt;
    }
    warnIfUnknown(*attribute, attributeOffset);
    return range;
  }

  bool takeComma() {
    lexer_.skipBlanks();
    if (lexer_.startsWith(")")) {
      lexer_.fail(QueryErrorKind::kArity, lexer_.offset(), "an attribute and two bounds");
      return false;
    }
    if (!lexer_.take(",")) {
      lexer_.expect("a comma");
      return false;
    }
    lexer_.skipBlanks();
    return true;
  }

  std::optional<Operand> takeValue(std::uint8_t& modifiers) {
    std::optional<Operand> value = lexer_.takeValue(modifiers);
    if (!value && !lexer_.error()) lexer_.expect("a value");
    return value;
  }

  bool isOrderable(std::string_view attribute, std::size_t offset) {
    const auto problem = checkOrdering(schema_, attribute);
    if (problem) lexer_.fail(problem->kind, offset, problem->expected);
    return !problem;
  }

  void warnIfUnknown(std::string_view attribute, std::size_t offset) {
    if (attribute == kAnyAttribute || attribute == kAnyAttributeOrText) return;
    if (schema_.find(attribute) != nullptr || !unknown_.insert(attribute).second) return;
    warnings_.push_back({std::string(attribute), offset});
  }

  void closeParenthesis() {
    const std::size_t at = lexer_.offset() - 1;
    reduceWhile(NodeKind::kOr);
    if (pending_.empty()) {
      return lexer_.fail(QueryErrorKind::kSyntax, at, "&& or || or the end");
    }
    pending_.pop_back();
    --nesting_;
    applyNots();
  }

  void applyNots() {
    while (!pending_.empty() && pending_.back() == Pending::kNot) {
      pending_.pop_back();
      --nesting_;
      operands_.back() = tree_.addNot(operands_.back());
    }
  }

  /// Joins what is pending and binds at least as tightly as `weakest`, which is && or ||.
  void reduceWhile(NodeKind weakest) {
    while (!pending_.empty()) {
      const Pending top = pending_.back();
      if (top == Pending::kParenthesis) return;
      if (top == Pending::kOr && weakest == NodeKind::kAnd) return;
      pending_.pop_back();
      const std::uint32_t right = operands_.back();
      operands_.pop_back();
      operands_.back() = tree_.join(top == Pending::kAnd ? NodeKind::kAnd : NodeKind::kOr,
                                    operands_.back(), right);
    }
  }

  Result<Query, QueryError> finish() {
    reduceWhile(NodeKind::kOr);
    if (!pending_.empty()) {
      lexer_.expect("a closing parenthesis");
      return *lexer_.error();
    }
    return Query(std::string(text_), tree_.takeNodes(), std::move(terms_), operands_.back(),
                 std::move(warnings_));
  }

  std::string_view text_;
  const AttributeSchema& schema_;
  QueryLexer lexer_;
  TreeBuilder tree_;
  std::vector<Pending> pending_;
  std::vector<std::uint32_t> operands_;
  std::size_t nesting_ = 0;
  std::vector<Term> terms_;
  std::vector<QueryWarning> warnings_;
  std::unordered_set<std::string_view> unknown_;
};

}  // namespace

Result<Query, QueryError> parseQuery(std::string_view text, const AttributeSchema& schema) {
  return Parser(text, schema).parse();
}

}  // namespace vt::query
