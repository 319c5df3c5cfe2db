#include "metadata/query/ValueTest.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "foundation/Array.h"
#include "metadata/query/QuerySemantics.h"

namespace vt::query {

namespace {

using Microsecond = Date::duration;

Value numberOrZero(const Operand& operand) {
  // The parser has let only numbers through.
  return numberOf(operand, /*allowsWords=*/true).value_or(Value(0));
}

TimeSpan spanOf(const Operand& operand, const EvaluationContext& context) {
  if (const auto* time = std::get_if<TimeValue>(&operand)) return resolveTime(*time, context);
  const Date instant = dateFromReferenceSeconds(numberOrZero(operand).doubleValue());
  return {instant, instant, true};
}

NumberTest numberTest(Operator operation, Value number) {
  switch (operation) {
    case Operator::kEqual:
    case Operator::kNotEqual:
      return {number, number};
    case Operator::kLess:
      return {.low = {}, .high = std::move(number), .includesHigh = false};
    case Operator::kLessOrEqual:
      return {.low = {}, .high = std::move(number)};
    case Operator::kGreater:
      return {.low = std::move(number), .high = {}, .includesLow = false};
    case Operator::kGreaterOrEqual:
      return {.low = std::move(number), .high = {}};
  }
  return {};
}

DateTest dateTest(Operator operation, const TimeSpan& span) {
  switch (operation) {
    case Operator::kEqual:
    case Operator::kNotEqual:
      return {span.start, span.isInstant ? span.start : span.end - Microsecond{1}};
    case Operator::kLess:
      return {.last = span.start - Microsecond{1}};
    case Operator::kLessOrEqual:
      return {.last = span.start};
    case Operator::kGreater:
      return {.first = span.start + Microsecond{1}};
    case Operator::kGreaterOrEqual:
      return {.first = span.start};
  }
  return {};
}

bool isIdentifier(const Attribute& attribute) {
  return attribute.name == "kMDItemContentType" || attribute.name == "kMDItemContentTypeTree";
}

}  // namespace

bool PresenceTest::operator()(const Value& value) const { return !value.isNull(); }

bool TextTest::operator()(const Value& value) const {
  const auto* text = value.get<std::string>();
  return text != nullptr && matcher.matches(std::string_view(*text));
}

bool NumberTest::operator()(const Value& value) const {
  if (!value.isNumber()) return false;
  if (const auto* real = value.get<double>(); real != nullptr && std::isnan(*real)) return false;
  if (!low.isNull()) {
    const int order = compareNaturally(value, low);
    if (order < 0 || (order == 0 && !includesLow)) return false;
  }
  if (!high.isNull()) {
    const int order = compareNaturally(value, high);
    if (order > 0 || (order == 0 && !includesHigh)) return false;
  }
  return true;
}

bool DateTest::operator()(const Value& value) const {
  Date date;
  if (const auto* stored = value.get<Date>()) {
    date = *stored;
  } else if (value.isNumber()) {
    date = dateFromReferenceSeconds(value.doubleValue());
  } else {
    return false;
  }
  return date >= first && date <= last;
}

std::string patternOf(const Operand& operand) {
  if (const auto* number = std::get_if<NumberOperand>(&operand)) return number->literal;
  const auto* text = std::get_if<TextOperand>(&operand);
  return text == nullptr ? std::string() : text->pattern;
}

ValueTest testOf(const Comparison& comparison, const Attribute& attribute,
                 const EvaluationContext& context) {
  const auto* text = std::get_if<TextOperand>(&comparison.value);
  if (text != nullptr && text->isPresence()) return PresenceTest{};
  switch (attribute.type) {
    case AttributeType::kString: {
      std::uint8_t modifiers = comparison.modifiers;
      if (isIdentifier(attribute)) modifiers |= modifier::kCase;  // as identifiers of types compare
      return TextTest{
          TextMatcher(patternOf(comparison.value), modifiers, TextMatcher::Subject::kValue)};
    }
    case AttributeType::kNumber:
    case AttributeType::kBoolean:
      return numberTest(comparison.operation, numberOrZero(comparison.value));
    case AttributeType::kDate:
      return dateTest(comparison.operation, spanOf(comparison.value, context));
  }
  return PresenceTest{};
}

ValueTest testOf(const Range& range, const Attribute& attribute, const EvaluationContext& context) {
  if (attribute.type == AttributeType::kDate) {
    return DateTest{spanOf(range.low, context).start, spanOf(range.high, context).start};
  }
  return NumberTest{numberOrZero(range.low), numberOrZero(range.high)};
}

bool passes(const ValueTest& test, const Value& value) {
  const auto passesOne = [&](const Value& one) {
    return std::visit([&](const auto& t) { return t(one); }, test);
  };
  if (value.kind() != ValueKind::kArray) return passesOne(value);
  const auto array = value.array();
  return std::any_of(array->begin(), array->end(), passesOne);
}

}  // namespace vt::query
