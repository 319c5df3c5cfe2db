#include "foundation/TextConversion.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(TextConversion, ReplacesWhatIsNoCharacterAndLeavesOutWhatIsCut) {
  const TextConversion conversion("EUC-JP");
  ASSERT_TRUE(conversion);
  EXPECT_EQ(conversion.convert("\xC6\xFC\xCB\xDC"), "\u65E5\u672C");
  EXPECT_EQ(conversion.convert("\xC6\xFC\xFF\xCB\xDC"), "\u65E5\uFFFD\u672C");
  EXPECT_EQ(conversion.convert("\xC6\xFC\xCB"), "\u65E5");
}

TEST(TextConversion, GivesTheLastLetterThatAPointMightHaveFollowed) {
  EXPECT_EQ(TextConversion("WINDOWS-1255").convert("\xF9\xEC"), "\u05E9\u05DC");
  EXPECT_EQ(TextConversion("WINDOWS-1258").convert("ra"), "ra");
  EXPECT_EQ(TextConversion("BIG5-HKSCS").convert("\x88\x66"), "\u00CA");
}

TEST(TextConversion, BeginsAnewWithEachText) {
  const TextConversion conversion("ISO-2022-JP");
  EXPECT_EQ(conversion.convert("\x1B$BF|"), "\u65E5");
  EXPECT_EQ(conversion.convert("ab"), "ab");
}

TEST(TextConversion, IsNoneOfASetThatNobodyKnows) { EXPECT_FALSE(TextConversion("no-such-set")); }

}  // namespace
}  // namespace vt
