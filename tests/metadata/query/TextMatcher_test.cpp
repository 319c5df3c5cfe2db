#include "metadata/query/TextMatcher.h"

#include <gtest/gtest.h>

#include <random>

#include "foundation/UTF8.h"

namespace vt::query {

namespace {

constexpr auto kValue = TextMatcher::Subject::kValue;
constexpr auto kContent = TextMatcher::Subject::kContent;

bool matchesValue(std::string_view pattern, std::uint8_t modifiers, std::string_view value) {
  return TextMatcher(pattern, modifiers, kValue).matches(value);
}

/// The obvious way to compare whole values, which tries everything.
bool matchesSlowly(std::u32string_view pattern, std::u32string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] == U'*') {
    return matchesSlowly(pattern.substr(1), text) ||
           (!text.empty() && matchesSlowly(pattern, text.substr(1)));
  }
  return !text.empty() && (pattern[0] == U'?' || pattern[0] == text[0]) &&
         matchesSlowly(pattern.substr(1), text.substr(1));
}

}  // namespace

TEST(TextMatcher, AgreesWithTryingEverything) {
  constexpr std::uint32_t kSeed = 20240229;
  std::mt19937 random(kSeed);
  const std::u32string letters = U"abö日";
  for (int round = 0; round < 20000; ++round) {
    std::u32string pattern;
    std::u32string text;
    std::string patternBytes;
    std::string textBytes;
    for (std::size_t n = random() % 7; n > 0; --n) {
      pattern += random() % 2 == 0 ? letters[random() % 3] : U"*?"[random() % 2];
      appendCodePoint(patternBytes, pattern.back());
    }
    for (std::size_t n = random() % 9; n > 0; --n) {
      text += letters[random() % 4];
      appendCodePoint(textBytes, text.back());
    }
    ASSERT_EQ(matchesValue(patternBytes, 0, textBytes), matchesSlowly(pattern, text))
        << "seed " << kSeed << " round " << round << ": " << patternBytes << " on " << textBytes;
  }
}

TEST(TextMatcher, ComparesComposedAndDecomposedTextAlike) {
  for (const std::uint8_t modifiers : {0, 1, 2, 3, 4, 8}) {
    EXPECT_TRUE(matchesValue("Größe", modifiers, "Gro\u0308ße")) << int{modifiers};
    EXPECT_TRUE(matchesValue("Gro\u0308ße", modifiers, "Größe")) << int{modifiers};
  }
  EXPECT_TRUE(matchesValue("Gr?ße", 0, "Gro\u0308ße"));
}

TEST(TextMatcher, TakesBytesThatAreNotUtf8ForReplacementCharacters) {
  EXPECT_TRUE(matchesValue("a*.txt", 0, "a\xFF.txt"));
  EXPECT_TRUE(matchesValue("a?.txt", 0, "a\xFF.txt"));
  EXPECT_TRUE(matchesValue("a\uFFFD.txt", 0, "a\xFF.txt"));
  EXPECT_TRUE(matchesValue("*TXT*", modifier::kCase, "\xFF\xFE.txt"));
  EXPECT_FALSE(matchesValue("a.txt", 0, "a\xFF.txt"));
}

TEST(TextMatcher, FoldsNamesLongerThanItsBuffer) {
  const std::string name = std::string(300, 'A') + "Budget";
  EXPECT_TRUE(matchesValue("*aabudget", modifier::kCase, name));
}

TEST(TextMatcher, LetsAQuestionMarkTakeAWholeCharacter) {
  EXPECT_TRUE(matchesValue("?", 3, "ß"));
  EXPECT_TRUE(matchesValue("??", 3, "ßö"));
  EXPECT_FALSE(matchesValue("??", 3, "ß"));
  EXPECT_FALSE(matchesValue("s?", 3, "ß"));
}

TEST(TextMatcher, IsNotUpsetByMarksThatFoldAway) {
  EXPECT_TRUE(matchesValue("\u0301*a", modifier::kDiacritics, "ba"));
  EXPECT_TRUE(matchesValue("*a*\u0301", modifier::kDiacritics, "xay"));
  EXPECT_TRUE(matchesValue("\u0301", modifier::kDiacritics, ""));
  EXPECT_TRUE(matchesValue("\u0301?", modifier::kDiacritics, "a"));
}

TEST(TextMatcher, NeedsNoTimeForPatternsMadeToBeSlow) {
  // Backtracking would try more ways than there are atoms.
  std::string stars;
  for (int i = 0; i < 63; ++i) stars += "a*";
  std::string questions = "*";
  for (int i = 0; i < 31; ++i) questions += "a?";
  const std::string text(20000, 'a');
  for (const std::uint8_t modifiers : {0, 3, 4, 8}) {
    SCOPED_TRACE(int{modifiers});
    EXPECT_FALSE(matchesValue(stars + "b", modifiers, text));
    EXPECT_FALSE(matchesValue(questions + "*b", modifiers, text));
  }
  const SegmentedText content = segmentContent(text);
  EXPECT_FALSE(TextMatcher(stars + "b", 0, kContent).matches(content));
}

TEST(TextMatcher, MatchesContentByPhrasesAndWords) {
  struct Case {
    std::string_view pattern;
    std::uint8_t modifiers;
    std::string_view text;
    bool matches;
  };
  const Case cases[] = {
      {"annual report", 0, "The Annual -- Report of", true},
      {"annual report", 0, "annual big report", false},
      {"annual report", 0, "annual reports", false},
      {"annual rep*", 0, "annual reports", true},
      {"ann* rep*", 0, "annual reports", true},
      {"ann* rep*", 0, "annual big reports", false},  // a `*` stays within its word
      {"ann* rep*", modifier::kTokens, "reports are annual", true},
      {"report annual", modifier::kTokens, "annual report", true},
      {"report annual", 0, "annual report", false},
      {"a?nual report", 0, "annual report", true},
      {"annual?report", 0, "annual report", false},
      {"gr???e", 0, "Größe", true},
      {"gro?e", 0, "Größe", false},
      {"annual \u0301 report", 0, "annual report", true},
      {"window", 0, "MyWindowClass", true},
      {"mywindowclass", 0, "MyWindowClass", true},
      {"window", 0, "NSWindow", false},
      {"résumé", 0, "RESUME", true},
      {"日本", 0, "これは日本語", true},
      {"* budget *", 0, "a budget", true},
      {"don't", 0, "don’t", true},
      {"", 0, "a", false},
      {"...", modifier::kTokens, "a ... b", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.pattern) + " in " + std::string(c.text));
    EXPECT_EQ(TextMatcher(c.pattern, c.modifiers, kContent).matches(segmentContent(c.text)),
              c.matches);
  }
}

}  // namespace vt::query
