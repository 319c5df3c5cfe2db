#include "extraction/media/MediaAttributes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Array.h"

namespace vt {
namespace {

TEST(MediaAttributes, KeepsWhatIsToldFirst) {
  Extraction extraction;
  MediaAttributes found(extraction);
  found.setText("kMDItemTitle", " first \n");
  found.setText("kMDItemTitle", "second");
  found.setNumber("kMDItemFNumber", 2.8);
  found.setNumber("kMDItemFNumber", 4);
  const auto& values = extraction.attributes;
  EXPECT_EQ(values.at("kMDItemTitle"), Value("first"));
  EXPECT_EQ(values.at("kMDItemFNumber"), Value(2.8));
}

TEST(MediaAttributes, AddsToListsWhatIsNotInThem) {
  Extraction extraction;
  MediaAttributes found(extraction);
  for (const char* keyword : {"sea", "boat", " sea", ""}) found.addText("kMDItemKeywords", keyword);
  EXPECT_EQ(extraction.attributes.at("kMDItemKeywords"), Value(Array::make({"sea", "boat"})));
}

TEST(MediaAttributes, PassesOverWhatIsNoValue) {
  Extraction extraction;
  MediaAttributes found(extraction);
  found.setText("kMDItemTitle", " \0 ");
  found.setNumber("kMDItemSpeed", std::nan(""));
  found.setNumber("kMDItemAltitude", HUGE_VAL);
  EXPECT_TRUE(extraction.attributes.empty());
}

TEST(MediaAttributes, BoundsTextsAndLists) {
  Extraction extraction;
  MediaAttributes found(extraction);
  found.setText("kMDItemComment", "x" + std::string(40'000, '\xc3') + "\xa4");
  std::string umlauts = "x";
  for (int i = 0; i < 40'000; ++i) umlauts += "\xc3\xa4";
  found.setText("kMDItemTitle", umlauts);
  for (int i = 0; i < 2000; ++i) found.addText("kMDItemKeywords", std::to_string(i));
  const auto& values = extraction.attributes;
  EXPECT_EQ(values.at("kMDItemTitle").get<std::string>()->size(), 32 * 1024 - 1);
  EXPECT_EQ(values.at("kMDItemKeywords").array()->size(), 1000);
}

TEST(MediaAttributes, MakesTextOfWhateverBytes) {
  EXPECT_EQ(attributeText("caf\xe9"), "caf\xc3\xa9");
  EXPECT_EQ(attributeText(std::string_view("one\0two\0\0", 9)), "one two");
}

}  // namespace
}  // namespace vt
