#include "extraction/FoundAttributes.h"

#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "foundation/UTF8.h"

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
      {"  a\r\n\tb ", "a b"}, {"", ""}, {" \n", ""}, {"a\xFF", "a\uFFFD"}, {"a\x01z", "a z"},
  };
  for (const Case& c : cases) EXPECT_EQ(tidiedText(c.text), c.tidied);
  const std::string cut = tidiedText(std::string(kMostAttributeText - 1, 'x') + "éé");
  EXPECT_EQ(cut, std::string(kMostAttributeText - 1, 'x')) << "not within a character";
}

TEST_F(FoundAttributesTest, KeepTheFirstTextAndNoEmptyOne) {
  attributes_.setText("kMDItemTitle", " ");
  EXPECT_FALSE(extraction_.attributes.contains("kMDItemTitle"));
  attributes_.setText("kMDItemTitle", "one");
  attributes_.setText("kMDItemTitle", "two");
  EXPECT_EQ(at("kMDItemTitle"), Value("one"));
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
  attributes_.setReal("kMDItemPageWidth", 0.0 / 0.0);
  attributes_.setDate("kMDItemDueDate", std::nullopt);
  EXPECT_TRUE(extraction_.attributes.empty());
}

}  // namespace
}  // namespace vt
