#pragma once

#include <string>
#include <variant>

#include "foundation/Value.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/Query.h"
#include "metadata/query/TextMatcher.h"

namespace vt::query {

/// Satisfied by any value but null and an empty array.
struct PresenceTest {
  bool operator()(const Value& value) const;
};

/// Satisfied by text that matches.
struct TextTest {
  TextMatcher matcher;

  bool operator()(const Value& value) const;
};

/// Satisfied by numbers and booleans from `low` to `high`; an end that is null is open.
struct NumberTest {
  Value low;
  Value high;
  bool includesLow = true;
  bool includesHigh = true;

  bool operator()(const Value& value) const;
};

/// Satisfied by dates from `first` to `last`, both included. A number is seconds since 2001.
struct DateTest {
  Date first = Date::min();
  Date last = Date::max();

  bool operator()(const Value& value) const;
};

/// What one value has to satisfy.
using ValueTest = std::variant<PresenceTest, TextTest, NumberTest, DateTest>;

/// The test that a comparison makes of an attribute, its times resolved. For != the test of ==,
/// to be negated.
ValueTest testOf(const Comparison& comparison, const Attribute& attribute,
                 const EvaluationContext& context);
ValueTest testOf(const Range& range, const Attribute& attribute, const EvaluationContext& context);

/// The pattern that an operand is where text is compared; a number stands for its digits, and a
/// time for nothing.
std::string patternOf(const Operand& operand);

/// Whether the value, or any element of it when it is an array, passes.
bool passes(const ValueTest& test, const Value& value);

}  // namespace vt::query
