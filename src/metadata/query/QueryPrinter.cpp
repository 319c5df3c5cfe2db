#include "metadata/query/QueryPrinter.h"

#include <algorithm>
#include <string_view>

#include "metadata/query/NumberLiteral.h"
#include "metadata/query/QueryLexer.h"
#include "metadata/query/QueryParser.h"

namespace vt::query {

namespace {

enum class Style { kReadable, kTerse };

std::string modifierLetters(std::uint8_t modifiers) {
  std::string letters;
  if ((modifiers & modifier::kCase) != 0) letters += 'c';
  if ((modifiers & modifier::kDiacritics) != 0) letters += 'd';
  if ((modifiers & modifier::kWords) != 0) letters += 'w';
  if ((modifiers & modifier::kTokens) != 0) letters += 't';
  if ((modifiers & modifier::kSaved) != 0) letters += 's';
  return letters;
}

std::string_view symbolOf(Operator operation, Style style) {
  switch (operation) {
    case Operator::kEqual:
      return style == Style::kTerse ? "=" : "==";
    case Operator::kNotEqual:
      return "!=";
    case Operator::kLess:
      return "<";
    case Operator::kGreater:
      return ">";
    case Operator::kLessOrEqual:
      return "<=";
    case Operator::kGreaterOrEqual:
      return ">=";
  }
  return {};
}

/// Whether the text comes back as it is when it stands without quotes.
bool canStandBare(const TextOperand& text) {
  return text.isPresence() || (!text.pattern.empty() &&
                               std::all_of(text.pattern.begin(), text.pattern.end(), isWordByte) &&
                               lengthOfNumber(text.pattern) != text.pattern.size());
}

void printQuoted(const TextOperand& text, std::string& out) {
  const auto count = [&](char c) {
    return std::count(text.pattern.begin(), text.pattern.end(), c);
  };
  const char quote = count('"') > count('\'') ? '\'' : '"';
  out += quote;
  for (const char c : text.pattern) {
    if (c == quote) out += '\\';
    out += c;
  }
  out += quote;
}

void printTime(const TimeValue& time, std::string& out) {
  out += "$time.";
  out += nameOfTimeFunction(time.function);
  if (time.function == TimeValue::Function::kIso) {
    out += '(';
    out += time.iso;
    out += ')';
  } else if (time.count) {
    out += '(';
    out += std::to_string(*time.count);
    out += time.hasUnitLetter ? "d)" : ")";
  }
}

void printOperand(const Operand& operand, Style style, std::string& out) {
  if (const auto* time = std::get_if<TimeValue>(&operand)) return printTime(*time, out);
  if (const auto* number = std::get_if<NumberOperand>(&operand)) {
    out += number->literal;
    return;
  }
  const auto& text = std::get<TextOperand>(operand);
  if (style == Style::kTerse && canStandBare(text)) {
    out += text.pattern;
  } else {
    printQuoted(text, out);
  }
}

void printTest(const Comparison& comparison, Style style, std::string& out) {
  const std::string_view blank = style == Style::kReadable ? " " : "";
  const std::string letters = modifierLetters(comparison.modifiers);
  const auto* text = std::get_if<TextOperand>(&comparison.value);
  out += comparison.attribute;
  out += blank;
  out += symbolOf(comparison.operation, style);
  if (text != nullptr && !letters.empty()) {
    out += blank;
    printQuoted(*text, out);
    out += letters;
    return;
  }
  if (!letters.empty()) {
    out += '[';
    out += letters;
    out += ']';
  }
  out += blank;
  printOperand(comparison.value, style, out);
}

void printTest(const Range& range, Style style, std::string& out) {
  const std::string_view comma = style == Style::kReadable ? ", " : ",";
  out += "InRange(";
  out += range.attribute;
  out += comma;
  printOperand(range.low, style, out);
  out += comma;
  printOperand(range.high, style, out);
  out += ')';
}

/// Whether a node must be in parentheses where it stands.
bool needsParentheses(const Query& query, const Node& node) {
  if (node.parent == kNoNode) return false;
  const NodeKind above = query.nodes()[node.parent].kind;
  return (node.kind == NodeKind::kOr && above != NodeKind::kOr) ||
         (node.kind == NodeKind::kAnd && above == NodeKind::kNot);
}

std::string print(const Query& query, Style style) {
  const std::vector<Node>& nodes = query.nodes();
  std::string out;
  std::uint32_t at = query.root();
  for (;;) {
    // Down to the next leaf, opening what lies on the way.
    const Node* node = &nodes[at];
    if (needsParentheses(query, *node)) out += '(';
    if (node->kind == NodeKind::kNot) out += '!';
    if (node->firstChild != kNoNode) {
      at = node->firstChild;
      continue;
    }
    if (node->kind == NodeKind::kTerm) {
      std::visit([&](const auto& term) { printTest(term, style, out); }, query.terms()[node->term]);
    } else {
      out += node->kind == NodeKind::kTrue ? "true" : "false";
    }
    // Up to the nearest node with one to its right, closing what ends.
    for (;;) {
      if (nodes[at].firstChild != kNoNode && needsParentheses(query, nodes[at])) out += ')';
      if (at == query.root()) return out;
      if (nodes[at].nextSibling != kNoNode) break;
      at = nodes[at].parent;
    }
    const bool isAnd = nodes[nodes[at].parent].kind == NodeKind::kAnd;
    if (style == Style::kReadable) {
      out += isAnd ? " && " : " || ";
    } else {
      out += isAnd ? "&&" : "||";
    }
    at = nodes[at].nextSibling;
  }
}

}  // namespace

std::string printQuery(const Query& query) {
  std::string text = print(query, Style::kReadable);
  if (text.size() > kMaximumQueryBytes) text = print(query, Style::kTerse);
  return text;
}

std::string printTerm(const Term& term) {
  std::string text;
  std::visit([&](const auto& test) { printTest(test, Style::kReadable, text); }, term);
  return text;
}

}  // namespace vt::query
