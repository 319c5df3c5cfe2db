#include "metadata/query/TypedValue.h"

#include <gtest/gtest.h>

#include <utility>

namespace vt::query {
namespace {

Attribute attributeOf(AttributeType type, std::string name = "a") {
  Attribute attribute;
  attribute.name = std::move(name);
  attribute.type = type;
  return attribute;
}

}  // namespace

TEST(TypedValue, BecomesACondition) {
  const Attribute text = attributeOf(AttributeType::kString);
  const Attribute number = attributeOf(AttributeType::kNumber);
  const Attribute size = attributeOf(AttributeType::kNumber, "kMDItemFSSize");
  const Attribute date = attributeOf(AttributeType::kDate);
  const Attribute truth = attributeOf(AttributeType::kBoolean);
  struct Case {
    const Attribute& attribute;
    std::string_view typed;
    std::string_view condition;
  };
  const Case cases[] = {
      {text, "smith", "a == \"*smith*\"cd"},
      {text, "*", "a == \"*\""},
      {text, "a*\"b", "a == \"*a\\*\\\"b*\"cd"},
      {number, "12", "a == 12"},
      {number, "1.5", "a == 1.5"},
      {number, ">12", "a > 12"},
      {number, "<=12", "a <= 12"},
      {number, "1..3", "(a >= 1 && a <= 3)"},
      {number, "1..", "a >= 1"},
      {number, "..3", "a <= 3"},
      {size, "1mb", "(kMDItemFSSize >= 500000 && kMDItemFSSize < 1500000)"},
      {size, "1.5MB", "(kMDItemFSSize >= 1450000 && kMDItemFSSize < 1550000)"},
      {size, ">10kb", "kMDItemFSSize > 10000"},
      {size, ">=1kib", "kMDItemFSSize >= 1024"},
      {size, "1kb..2kb", "(kMDItemFSSize >= 1000 && kMDItemFSSize <= 2000)"},
      {date, "today", "(a >= $time.today && a < $time.tomorrow)"},
      {date, ">2024", "a >= $time.iso(2025-01-01)"},
      {date, ">=2024", "a >= $time.iso(2024-01-01)"},
      {date, "<2024", "a < $time.iso(2024-01-01)"},
      {date, "<=2024", "a < $time.iso(2025-01-01)"},
      {date, "2023..2024-03", "(a >= $time.iso(2023-01-01) && a < $time.iso(2024-04-01))"},
      {date, "..yesterday", "a < $time.today"},
      {truth, "Yes", "a == 1"},
      {truth, "nein", "a == 0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.typed);
    EXPECT_EQ(conditionForValue(c.attribute, c.typed), c.condition);
  }
}

TEST(TypedValue, IsNoneOfAnotherType) {
  for (const std::string_view typed : {"", "big", "12x", "1mb", ">", "..", "1..x", "x..1", "nan",
                                       "inf", "1e400", "0x10", ">>1", " 1"}) {
    SCOPED_TRACE(typed);
    EXPECT_FALSE(conditionForValue(attributeOf(AttributeType::kNumber), typed));
  }
  for (const std::string_view typed : {"", "soon", "12", "..", ">", "2024..soon"}) {
    SCOPED_TRACE(typed);
    EXPECT_FALSE(conditionForValue(attributeOf(AttributeType::kDate), typed));
  }
  EXPECT_FALSE(conditionForValue(attributeOf(AttributeType::kBoolean), "maybe"));
}

}  // namespace vt::query
