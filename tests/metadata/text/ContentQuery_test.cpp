#include "metadata/text/ContentQuery.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "metadata/query/Query.h"
#include "metadata/text/ContentTerms.h"

namespace vt {
namespace {

/// Elements parted by " & ", their phrases by "|", terms by blanks.
std::string printed(std::string_view pattern, std::uint8_t modifiers = 0) {
  std::string text;
  for (const auto& [phrases, words] : contentQueryOf(pattern, modifiers).all) {
    if (!text.empty()) text += " & ";
    if (!words.empty()) text += fmt::format("pattern of {}", words.size());
    for (const TermPhrase& phrase : phrases) {
      if (&phrase != phrases.data()) text += '|';
      for (const std::string& term : phrase.terms) {
        if (&term != phrase.terms.data()) text += ' ';
        text += term;
      }
      if (phrase.endsInPrefix) text += '*';
    }
  }
  return text;
}

TEST(ContentQuery, AsksForTheTermsThatATextMayBe) {
  struct Case {
    const char* what;
    std::string_view pattern;
    std::string_view printed;
  };
  const Case cases[] = {
      {"no word", " - ", ""},
      {"nothing but a run", "*", ""},
      {"a word", "Budget", "abudget|bbudget|ebudget|cbudget|dbudget|fbudget"},
      {"a number", "2024", "a2024|b2024"},
      {"the beginning of a word", "bud*", "abud*|bbud*|ebud*"},
      {"the beginning of a number", "20*", "a20*|b20*"},
      {"an ideograph", "日", "a日|b日"},
      {"ideographs", "日本語", "g日本 g本語"},
      {"the beginning of ideographs", "日本*", "g日本"},
      {"ideographs apart", "日 本", "a日 a本|b日 a本"},
      {"two words", "My plan", "amy aplan|bmy aplan|emy aplan|amy cplan|bmy cplan|emy cplan"},
      {"letters and digits", "ab12", "aab b12|bab b12|eab b12"},
      {"a phrase that goes on", "in 20*", "ain a20*|bin a20*|ein a20*"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(printed(c.pattern), c.printed);
  }
}

TEST(ContentQuery, AsksForEachWordByItselfWhenTheirOrderIsFree) {
  EXPECT_EQ(printed("9 10*", query::modifier::kTokens), "a9|b9 & a10*|b10*");
}

TEST(ContentQuery, IsAPatternWhereAWildcardIsNotAtTheEnd) {
  for (const char* pattern : {"*get", "b*t", "b?t", "?", "bud*\u0301"}) {
    SCOPED_TRACE(pattern);
    EXPECT_EQ(printed(pattern), "pattern of 1");
  }
  EXPECT_EQ(printed("bud* 2024"), "pattern of 2");
  EXPECT_EQ(printed("9 *10", query::modifier::kTokens), "a9|b9 & pattern of 1");
  EXPECT_EQ(printed(std::string(kLongestTermText + 1, 'x') + "*"), "pattern of 1");
  EXPECT_FALSE(printed(std::string(kLongestTermText + 1, 'x')).starts_with("pattern"));
}

TEST(ContentQuery, PassesOverWordsOfMarksAlone) {
  EXPECT_EQ(printed("9 \u0301 10"), printed("9 10"));
  EXPECT_EQ(printed("9 \u0301*"), printed("9"));
}

}  // namespace
}  // namespace vt
