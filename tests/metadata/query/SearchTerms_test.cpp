#include "metadata/query/SearchTerms.h"

#include <gtest/gtest.h>

#include <random>

namespace vt::query {
namespace {

/// "name:text@offset" of each, phrases in quotes.
std::string printed(std::string_view typed) {
  std::string text;
  for (const SearchTerm& term : searchTermsIn(typed)) {
    if (!text.empty()) text += " | ";
    if (!term.name.empty()) text += term.name + ":";
    text += term.isPhrase ? '"' + term.text + '"' : term.text;
    text += "@" + std::to_string(term.offset);
  }
  return text;
}

}  // namespace

TEST(SearchTerms, AreWordsPhrasesAndNamedValues) {
  using namespace std::string_view_literals;
  struct Case {
    std::string_view typed;
    std::string_view terms;
  };
  const Case cases[] = {
      {"", ""},
      {" annual  report\t", "annual@1 | report@9"},
      {"\"annual report\"", "\"annual report\"@1"},
      {"\"annual\treport", "\"annual report\"@1"},
      {"\"\" \" \"", ""},
      {"author:smith", "author:smith@7"},
      {"author:\"john smith\" x", "author:\"john smith\"@8 | x@20"},
      {"a:b:c", "a:b:c@2"},
      {"author:", "author:@0"},
      {"author: smith", "author:@0 | smith@8"},
      {"author:\"\"", "author:@0"},
      {":x", ":x@0"},
      {"ab\"cd\"ef", "ab@0 | \"cd\"@3 | ef@6"},
      {"größe:1mb", "größe:1mb@8"},
      {"a\0b"sv, "a@0 | b@2"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.typed);
    EXPECT_EQ(printed(c.typed), c.terms);
  }
}

TEST(SearchTerms, StandForWordsWhenTheirNameMeansNothing) {
  EXPECT_EQ(searchTermsIn("a:b")[0].words(), std::vector<std::string>{"a:b"});
  EXPECT_EQ(searchTermsIn("a:\"b c\"")[0].words(), (std::vector<std::string>{"a:", "b c"}));
  EXPECT_EQ(searchTermsIn("\"a:b\"")[0].words(), std::vector<std::string>{"a:b"});
}

TEST(SearchTerms, PointIntoWhatWasTypedWhateverThatIs) {
  std::mt19937 random(7);
  for (int round = 0; round < 5000; ++round) {
    std::string typed;
    for (unsigned left = random() % 12; left > 0; --left)
      typed += "a:\" \xc3\xbc\xff\n"[random() % 9];
    for (const SearchTerm& term : searchTermsIn(typed)) {
      EXPECT_LE(term.offset, typed.size());
      EXPECT_NE(term.text.find_first_not_of(' '), std::string::npos);
    }
  }
}

}  // namespace vt::query
