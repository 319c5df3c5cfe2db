#include "extraction/FoundAttributes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Array.h"

namespace vt {
namespace {

class FoundAttributesTest : public testing::Test {
 protected:
  const Value& at(const std::string& name) const { return extraction_.attributes.at(name); }

  Extraction extraction_;
  FoundAttributes attributes_{extraction_};
};

TEST_F(FoundAttributesTest, TidyText) {
  struct Case {
    std::string text;
    std::string tidied;
  };
  const Case cases[] = {
      {"  a\r\n\tb ", "a b"},
      {"", ""},
      {" \n", ""},
      {"a\x01z", "a z"},
      {std::string("one\0two\0\0", 9), "one two"},
      {"na\u00EFve", "na\u00EFve"},
      {"caf\xE9", "caf\u00E9"},
      {"na\xEFve caf\xC3\xA9", "na\u00EFve caf\u00C3\u00A9"},
  };
  for (const Case& c : cases) EXPECT_EQ(tidiedText(c.text), c.tidied);
}

TEST(AsUtf8, KeepsTheEndOfTextsInAnyForm) {
  struct Case {
    std::string text;
    std::string utf8;
  };
  const Case cases[] = {
      {"", ""},
      {"caf\xE9", "caf\u00E9"},
      {"caf\xE9 ", "caf\u00E9 "},
      {"\xFF\xFE", ""},
      {"\xFE\xFF", ""},
      {"\xFF\xFE\x3C\x04", "\u043C"},
      {"\xFE\xFF\x04\x3C", "\u043C"},
      {std::string("\xFF\xFE\0\0\x3C\x04\0\0", 8), "\u043C"},
  };
  for (const Case& c : cases) EXPECT_EQ(asUtf8(c.text), c.utf8);
}

TEST_F(FoundAttributesTest, BoundTextWithoutCuttingACharacter) {
  const std::string most(kMostAttributeText - 1, 'x');
  EXPECT_EQ(tidiedText(most + "xx"), most + "x");
  EXPECT_EQ(tidiedText(most + "\u00E9\u00E9"), most);
  EXPECT_EQ(tidiedText("x" + std::string(kMostAttributeText, '\xE9')).size(),
            kMostAttributeText - 1);
  EXPECT_EQ(tidiedText(most + "   x"), most);
}

TEST_F(FoundAttributesTest, KeepTheFirstTextAndNoEmptyOne) {
  attributes_.setText("kMDItemTitle", " ");
  EXPECT_FALSE(extraction_.attributes.contains("kMDItemTitle"));
  attributes_.setText("kMDItemTitle", "one");
  attributes_.setText("kMDItemTitle", "two");
  EXPECT_EQ(at("kMDItemTitle"), Value("one"));
  attributes_.setNumber("kMDItemFNumber", 2.8);
  attributes_.setNumber("kMDItemFNumber", 4);
  EXPECT_EQ(at("kMDItemFNumber"), Value(2.8));
  EXPECT_TRUE(attributes_.has("kMDItemFNumber"));
  EXPECT_FALSE(attributes_.has("kMDItemSpeed"));
}

TEST_F(FoundAttributesTest, TellIntegersFromOtherNumbers) {
  attributes_.setNumber("kMDItemPageWidth", 612.0);
  EXPECT_EQ(at("kMDItemPageWidth").kind(), Value(std::int64_t{612}).kind());
  attributes_.setNumber("kMDItemPageHeight", 1e300);
  EXPECT_EQ(at("kMDItemPageHeight"), Value(1e300));
}

TEST_F(FoundAttributesTest, GatherEachValueOnce) {
  attributes_.addTexts("kMDItemKeywords", "a, b;,a", ",;");
  attributes_.addText("kMDItemKeywords", "c");
  EXPECT_EQ(at("kMDItemKeywords"), Value(Array::make({"a", "b", "c"})));
}

TEST_F(FoundAttributesTest, HaveNoMoreValuesThanABound) {
  for (std::size_t i = 0; i < kMostAttributeValues + 10; ++i) {
    attributes_.addText("kMDItemKeywords", std::to_string(i));
  }
  EXPECT_EQ(at("kMDItemKeywords").array()->size(), kMostAttributeValues);
}

TEST_F(FoundAttributesTest, LeaveOutNumbersThatAreNone) {
  attributes_.setNumber("kMDItemPageWidth", std::nan(""));
  attributes_.setNumber("kMDItemAltitude", HUGE_VAL);
  attributes_.setDate("kMDItemDueDate", std::nullopt);
  EXPECT_TRUE(extraction_.attributes.empty());
}

}  // namespace
}  // namespace vt
