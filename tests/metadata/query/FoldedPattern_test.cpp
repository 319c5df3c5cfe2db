#include "metadata/query/FoldedPattern.h"

#include <gtest/gtest.h>

#include <random>

#include "foundation/TextFolding.h"
#include "foundation/UTF8.h"
#include "metadata/query/TextMatcher.h"

namespace vt::query {

namespace {

std::string describe(const FoldedPattern& pattern) {
  return (pattern.isOpenAtStart ? "*" : "") + pattern.literal + (pattern.isOpenAtEnd ? "*" : "") +
         (pattern.decides ? " decides" : "");
}

std::string folded(char32_t character, Folding folding) {
  std::string out;
  appendFolded(character, folding, out);
  return out;
}

}  // namespace

TEST(FoldedPattern, SaysWhatTheFoldedTextMustHold) {
  constexpr std::uint8_t kBoth = modifier::kCase | modifier::kDiacritics;
  struct Case {
    const char* pattern;
    std::uint8_t modifiers;
    const char* description;
  };
  const Case cases[] = {
      {"Größe", kBoth, "grosse decides"},
      {"*Größe*", kBoth, "*grosse* decides"},
      {"Größe*", kBoth, "grosse* decides"},
      {"**Größe", kBoth, "*grosse decides"},
      {"Größe", 0, "grosse"},
      {"*Größe", modifier::kCase, "*grosse"},
      {"Größe*", modifier::kDiacritics, "grosse*"},
      {"*ab*cde*f*", kBoth, "*cde*"},
      {"ab?cde", kBoth, "*cde*"},
      {"ab\\*c\\?", kBoth, "ab*c? decides"},
      {"my report", kBoth | modifier::kWords, "*my report*"},
      {"my report", kBoth | modifier::kTokens, "*report*"},
      {"my_", kBoth | modifier::kTokens, "*my*"},
      {"\u0301*abc", 0, "*abc*"},  // what folds to nothing still closes the start
      {"\u0301abc", 0, "abc"},
      {"\u0301", kBoth, "**"},
      {"*", kBoth, "**"},
      {"?", kBoth, "**"},
      {"", kBoth, "**"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.pattern);
    EXPECT_EQ(describe(foldedPatternOf(c.pattern, c.modifiers)), c.description);
  }
}

// What the whole thing rests on: folding by case and marks undoes no folding by one of them, so it
// tells no two texts apart that these hold alike.
TEST(FoldedPattern, RestsOnOneFoldingOfAllCharacters) {
  for (char32_t character = 1; character <= 0x10FFFF; ++character) {
    if (character >= 0xD800 && character <= 0xDFFF) continue;
    if (character == 0x345) continue;  // the mark that is a letter without case: see below
    const std::string expected = folded(character, Folding::kCaseAndMarks);
    for (const Folding part : {Folding::kCase, Folding::kMarks}) {
      std::string again;
      const std::string partly = folded(character, part);
      for (std::size_t at = 0; at < partly.size();) {
        const DecodedCodePoint next = decodeCodePoint(std::string_view(partly).substr(at));
        appendFolded(next.codePoint, Folding::kCaseAndMarks, again);
        at += next.length;
      }
      ASSERT_EQ(again, expected) << "U+" << std::hex << static_cast<std::uint32_t>(character)
                                 << " by " << static_cast<int>(part);
    }
  }
}

TEST(FoldedPattern, RequiresNoIotaThatMayBeAMark) {
  EXPECT_EQ(describe(foldedPatternOf("αι", modifier::kCase)), "**");
  EXPECT_EQ(describe(foldedPatternOf("Ι", modifier::kCase)), "**");
  EXPECT_EQ(describe(foldedPatternOf("x\u0345", modifier::kCase)), "**");
  EXPECT_EQ(describe(foldedPatternOf("αι", 0)), "αι");
}

TEST(FoldedPattern, AdmitsAllThatMatches) {
  constexpr std::uint32_t kSeed = 20261121;
  std::mt19937 random(kSeed);
  const std::u32string letters = U"aAbBöÖßẞ\u0301\u0308İıæK_ 1日ﬁιΙ\u0345";
  std::size_t matches = 0;
  for (int round = 0; round < 60000; ++round) {
    std::string pattern;
    std::string text;
    for (std::size_t n = random() % 6; n > 0; --n) {
      appendCodePoint(
          pattern, random() % 4 != 0 ? letters[random() % letters.size()] : U"**?"[random() % 3]);
    }
    for (std::size_t n = random() % 7; n > 0; --n) {
      if (random() % 30 == 0) {
        text += '\xFF';
      } else {
        appendCodePoint(text, letters[random() % letters.size()]);
      }
    }
    const auto modifiers = static_cast<std::uint8_t>(random() % 16);
    const bool doesMatch =
        TextMatcher(pattern, modifiers, TextMatcher::Subject::kValue).matches(text);
    const FoldedPattern foldedPattern = foldedPatternOf(pattern, modifiers);
    const bool isAdmitted = foldedPattern.admits(foldText(text, Folding::kCaseAndMarks));
    ASSERT_TRUE(isAdmitted || !doesMatch)
        << "seed " << kSeed << ": " << pattern << " by " << int{modifiers} << " on " << text;
    if (foldedPattern.decides) {
      ASSERT_EQ(isAdmitted, doesMatch)
          << "seed " << kSeed << ": " << pattern << " by " << int{modifiers} << " on " << text;
    }
    matches += doesMatch ? 1 : 0;
  }
  EXPECT_GT(matches, 3000U);
}

}  // namespace vt::query
