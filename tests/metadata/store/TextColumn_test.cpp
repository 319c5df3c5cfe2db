#include "metadata/store/TextColumn.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vt {
namespace {

constexpr std::string_view kText("one\0\0three\0", 11);

TEST(TextColumn, GivesTextsByNumber) {
  const std::vector<std::uint32_t> offsets = {0, 4, 5, 11};
  const TextColumn texts(kText, offsets);
  EXPECT_EQ(texts.size(), 3U);
  EXPECT_EQ(texts[0], "one");
  EXPECT_EQ(texts[1], "");
  EXPECT_EQ(texts[2], "three");
  EXPECT_TRUE(texts.isWhole());
}

TEST(TextColumn, FindsTheNumberOfAByte) {
  const std::vector<std::uint32_t> offsets = {0, 4, 5, 11};
  const TextColumn texts(kText, offsets);
  const std::size_t numbers[] = {0, 0, 0, 0, 1, 2, 2, 2, 2, 2, 2};
  for (std::size_t offset = 0; offset < kText.size(); ++offset) {
    SCOPED_TRACE(offset);
    for (std::size_t from = 0; from <= numbers[offset]; ++from) {
      EXPECT_EQ(texts.numberAt(offset, from), numbers[offset]);
    }
  }
}

TEST(TextColumn, IsNotWholeWithWrongOffsets) {
  const std::vector<std::uint32_t> wrong[] = {{},
                                              {1, 4, 5, 11},
                                              {0, 4, 5, 10},
                                              {0, 4, 5},
                                              {0, 5, 5, 11},
                                              {0, 3, 5, 11},
                                              {0, 4, 5, 8, 11},
                                              {0, 4, 4, 11},
                                              {0, 11},
                                              {0, 5, 4, 11},
                                              {0, 4, 0xFFFFFFFF, 11}};
  for (const std::vector<std::uint32_t>& offsets : wrong) {
    SCOPED_TRACE(testing::PrintToString(offsets));
    const TextColumn texts(kText, offsets);
    EXPECT_FALSE(texts.isWhole());
    for (std::size_t number = 0; number < offsets.size() + 2; ++number) {
      EXPECT_LE(texts[number].size(), kText.size());  // inside, whatever it is
    }
  }
}

}  // namespace
}  // namespace vt
