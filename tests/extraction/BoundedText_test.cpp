#include "extraction/BoundedText.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(BoundedText, PartsWordsAndLinesByOneSeparator) {
  BoundedText text;
  text.newLine();
  text.append("a");
  text.space();
  text.space();
  text.append("b");
  text.space();
  text.newLine();
  text.newLine();
  text.space();
  text.append("c");
  text.newLine();
  EXPECT_EQ(text.take(), "a b\nc");
}

TEST(BoundedText, EndsAtItsBoundBetweenCharacters) {
  BoundedText text;
  text.append(std::string(kMostExtractedText - 1, 'x'));
  EXPECT_FALSE(text.isFull());
  text.append("é and more");
  EXPECT_TRUE(text.isFull());
  const std::string kept = text.take();
  EXPECT_EQ(kept, std::string(kMostExtractedText - 1, 'x'));
}

TEST(BoundedText, ReplacesWhatIsNoTextWithinItsBound) {
  BoundedText text;
  text.append("a\xFFz");
  EXPECT_EQ(text.take(), "a\uFFFDz");
  std::string odd;
  while (odd.size() < kMostExtractedText) odd += "\xFFx";
  text.append(odd);
  EXPECT_LE(text.take().size(), kMostExtractedText);
}

}  // namespace
}  // namespace vt
