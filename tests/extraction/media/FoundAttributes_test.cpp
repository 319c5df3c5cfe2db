#include "extraction/media/FoundAttributes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Array.h"

namespace vt {
namespace {

TEST(FoundAttributes, KeepsWhatIsToldFirst) {
  FoundAttributes found;
  found.setText("kMDItemTitle", " first \n");
  found.setText("kMDItemTitle", "second");
  found.setNumber("kMDItemFNumber", 2.8);
  found.setNumber("kMDItemFNumber", 4);
  const auto values = found.take();
  EXPECT_EQ(values.at("kMDItemTitle"), Value("first"));
  EXPECT_EQ(values.at("kMDItemFNumber"), Value(2.8));
  EXPECT_TRUE(found.take().empty());
}

TEST(FoundAttributes, AddsToListsWhatIsNotInThem) {
  FoundAttributes found;
  for (const char* keyword : {"sea", "boat", " sea", ""}) found.addText("kMDItemKeywords", keyword);
  EXPECT_EQ(found.take().at("kMDItemKeywords"), Value(Array::make({"sea", "boat"})));
}

TEST(FoundAttributes, PassesOverWhatIsNoValue) {
  FoundAttributes found;
  found.setText("kMDItemTitle", " \0 ");
  found.setNumber("kMDItemSpeed", std::nan(""));
  found.setNumber("kMDItemAltitude", HUGE_VAL);
  EXPECT_TRUE(found.take().empty());
}

TEST(FoundAttributes, BoundsTextsAndLists) {
  FoundAttributes found;
  found.setText("kMDItemComment", "x" + std::string(40'000, '\xc3') + "\xa4");
  std::string umlauts = "x";
  for (int i = 0; i < 40'000; ++i) umlauts += "\xc3\xa4";
  found.setText("kMDItemTitle", umlauts);
  for (int i = 0; i < 2000; ++i) found.addText("kMDItemKeywords", std::to_string(i));
  auto values = found.take();
  EXPECT_EQ(values.at("kMDItemTitle").get<std::string>()->size(), 32 * 1024 - 1);
  EXPECT_EQ(values.at("kMDItemKeywords").array()->size(), 1000);
}

TEST(FoundAttributes, MakesTextOfWhateverBytes) {
  EXPECT_EQ(attributeText("caf\xe9"), "caf\xc3\xa9");
  EXPECT_EQ(attributeText(std::string_view("one\0two\0\0", 9)), "one two");
}

}  // namespace
}  // namespace vt
