#include "metadata/catalogue/AttributeBytes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

TEST(AttributeBytes, GiveBackEveryValueThatAttributesHave) {
  const Value values[] = {
      "",
      "Größe",
      true,
      false,
      0,
      std::numeric_limits<std::int64_t>::min(),
      std::numeric_limits<std::uint64_t>::max(),
      -0.5,
      std::numeric_limits<double>::infinity(),
      Date{std::chrono::microseconds{-1}},
      Array::make({"one", "", "two"}),
      Array::make({1, 2.5, true, Date{}, "mixed"}),
  };
  for (const Value& value : values) {
    SCOPED_TRACE(attributeBytes(value));
    const Value back = attributeValue(attributeBytes(value));
    EXPECT_EQ(back, value);
    EXPECT_EQ(back.kind(), value.kind());
  }
}

TEST(AttributeBytes, AreNoneOfWhatNoAttributeIs) {
  const Value values[] = {Value(),
                          Data(),
                          std::make_shared<Dictionary>(),
                          Array::make({}),
                          Array::make({"one", Value()}),
                          Array::make({Array::make({"nested"})}),
                          std::numeric_limits<double>::quiet_NaN()};
  for (const Value& value : values) EXPECT_EQ(attributeBytes(value), "");
}

TEST(AttributeBytes, GiveTextThatIsUTF8) {
  EXPECT_EQ(attributeValue(attributeBytes("a\xFF"
                                          "b")),
            Value("a\uFFFDb"));
}

TEST(AttributeBytes, AreOfNoValueWhenTheyAreDamaged) {
  const std::string_view cases[] = {"",
                                    "x",
                                    "t\xFF",
                                    "y1",
                                    "i1234567",
                                    "r\0\0\0\0\0\0\xF8\x7F",
                                    "d",
                                    "a",
                                    std::string_view("a\1\0\0", 4),
                                    std::string_view("a\2\0\0\0t", 6),
                                    std::string_view("a\0\0\0\0", 5),
                                    std::string_view("a\1\0\0\0a", 6)};
  for (const std::string_view bytes : cases) {
    SCOPED_TRACE(bytes);
    EXPECT_TRUE(attributeValue(bytes).isNull());
  }
}

}  // namespace
}  // namespace vt
