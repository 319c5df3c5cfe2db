#include "settings/LetterCase.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(LetterCase, IsLowerInTheWholeText) {
  EXPECT_EQ(lowercaseString("Authors"), "authors");
  EXPECT_EQ(lowercaseString("Größe ÄÖÜ"), "größe äöü");
  EXPECT_EQ(lowercaseString("ΟΔΟΣ"), "οδος") << "a sigma that ends a word";
  EXPECT_EQ(lowercaseString(""), "");
}

TEST(LetterCase, IsUpperInTheFirstCharacterAlone) {
  struct Case {
    const char* text;
    const char* expected;
  };
  const Case cases[] = {
      {"studio", "Studio"}, {"STUDIO", "STUDIO"}, {"éCOLE", "ÉCOLE"}, {"ßa", "SSa"},
      {"7of9", "7of9"},     {"a", "A"},           {"", ""},           {"-x", "-x"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(withFirstCharacterInUpperCase(c.text), c.expected);
  }
}

TEST(LetterCase, TakesBytesThatAreNoTextForReplacementCharacters) {
  EXPECT_EQ(withFirstCharacterInUpperCase("\xFFx"), "\uFFFDx");
  EXPECT_EQ(lowercaseString("A\xFF"), "a\uFFFD");
}

}  // namespace
}  // namespace vt
