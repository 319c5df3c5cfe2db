#include "metadata/text/ContentQuery.h"

#include <gtest/gtest.h>

#include "metadata/query/Query.h"
#include "metadata/text/ContentTerms.h"

namespace vt {
namespace {

/// Elements parted by " & ", their phrases by "|", terms by blanks.
std::string printed(std::string_view pattern, std::uint8_t modifiers = 0) {
  const std::optional<ContentQuery> question = contentQueryOf(pattern, modifiers);
  if (!question) return "unknown";
  std::string text;
  for (const auto& phrases : question->all) {
    if (!text.empty()) text += " & ";
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

TEST(ContentQuery, IsNoneWhenTermsCannotTell) {
  for (const char* pattern : {"*get", "b*t", "b?t", "bud* 2024", "?", "a \u0301 b"}) {
    SCOPED_TRACE(pattern);
    EXPECT_EQ(printed(pattern), "unknown");
  }
  EXPECT_EQ(printed(std::string(kLongestTermText + 1, 'x') + "*"), "unknown");
  EXPECT_NE(printed(std::string(kLongestTermText + 1, 'x')), "unknown");
}

}  // namespace
}  // namespace vt
