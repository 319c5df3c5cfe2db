#include "metadata/query/QuerySemantics.h"

#include "metadata/query/NumberLiteral.h"

namespace vt::query {

namespace {

constexpr SemanticProblem kNeedsNumber = {QueryErrorKind::kValue, "a number"};
constexpr SemanticProblem kNeedsBoolean = {QueryErrorKind::kValue, "true, false or a number"};
constexpr SemanticProblem kNeedsDate = {QueryErrorKind::kValue,
                                        "a $time value or seconds since 2001-01-01T00:00:00Z"};
constexpr SemanticProblem kNeedsTextNotTime = {QueryErrorKind::kType,
                                               "text, since the attribute holds no date"};
constexpr SemanticProblem kNeedsNumberNotTime = {QueryErrorKind::kType,
                                                 "a number, since the attribute holds no date"};
constexpr SemanticProblem kHasNoOrder = {
    QueryErrorKind::kType, "an attribute with numbers or dates, since text has no order"};

/// What an attribute holds; none for one that nobody knows.
std::optional<AttributeType> typeOf(const AttributeSchema& schema, std::string_view attribute) {
  if (attribute == kAnyAttribute || attribute == kAnyAttributeOrText) return AttributeType::kString;
  const Attribute* known = schema.find(attribute);
  if (known == nullptr) return std::nullopt;
  return known->type;
}

std::optional<SemanticProblem> checkOperand(std::optional<AttributeType> type,
                                            const Operand& operand) {
  if (!type) return std::nullopt;
  const bool isTime = std::holds_alternative<TimeValue>(operand);
  switch (*type) {
    case AttributeType::kString:
      if (isTime) return kNeedsTextNotTime;
      return std::nullopt;
    case AttributeType::kNumber:
      if (isTime) return kNeedsNumberNotTime;
      if (!numberOf(operand, /*allowsWords=*/false)) return kNeedsNumber;
      return std::nullopt;
    case AttributeType::kBoolean:
      if (isTime) return kNeedsNumberNotTime;
      if (!numberOf(operand, /*allowsWords=*/true)) return kNeedsBoolean;
      return std::nullopt;
    case AttributeType::kDate:
      if (!isTime && !numberOf(operand, /*allowsWords=*/false)) return kNeedsDate;
      return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Value> numberOf(const Operand& operand, bool allowsWords) {
  if (const auto* number = std::get_if<NumberOperand>(&operand))
    return parseNumber(number->literal);
  const auto* text = std::get_if<TextOperand>(&operand);
  if (text == nullptr) return std::nullopt;
  if (allowsWords && (text->pattern == "true" || text->pattern == "false")) {
    return parseNumber(text->pattern == "true" ? "1" : "0");
  }
  return parseNumber(text->pattern);
}

std::optional<SemanticProblem> checkComparison(const AttributeSchema& schema,
                                               const Comparison& comparison) {
  const bool isEquality =
      comparison.operation == Operator::kEqual || comparison.operation == Operator::kNotEqual;
  const auto* text = std::get_if<TextOperand>(&comparison.value);
  if (isEquality && text != nullptr && text->isPresence()) return std::nullopt;
  return checkOperand(typeOf(schema, comparison.attribute), comparison.value);
}

std::optional<SemanticProblem> checkBound(const AttributeSchema& schema, std::string_view attribute,
                                          const Operand& bound) {
  return checkOperand(typeOf(schema, attribute), bound);
}

std::optional<SemanticProblem> checkOrdering(const AttributeSchema& schema,
                                             std::string_view attribute) {
  if (typeOf(schema, attribute) == AttributeType::kString) return kHasNoOrder;
  return std::nullopt;
}

}  // namespace vt::query
