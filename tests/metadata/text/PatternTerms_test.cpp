#include "metadata/text/PatternTerms.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

PatternTerms termsOf(std::string_view word, PlaceInPhrase place) {
  return {query::patternWords(query::patternCharacters(word)).at(0), place};
}

TEST(PatternTerms, BeginAsTheirPlaceAndTheirWildcardsAllow) {
  constexpr PlaceInPhrase kAlone;
  constexpr PlaceInPhrase kFirst{.isFirst = true, .isLast = false};
  constexpr PlaceInPhrase kMiddle{.isFirst = false, .isLast = false};
  constexpr PlaceInPhrase kLast{.isFirst = false, .isLast = true};
  struct Case {
    const char* what;
    std::string_view word;
    PlaceInPhrase place;
    std::vector<std::string> prefixes;
  };
  const Case cases[] = {
      {"closed", "i?x", kAlone, {"ai", "bi", "ci", "di", "ei", "fi", "h"}},
      {"open at the end", "i?x*", kAlone, {"ai", "bi", "ei", "h"}},
      {"open at the start", "*ix", kAlone, {"a", "b", "c", "d", "h"}},
      {"open at both", "*ix*", kAlone, {"a", "b", "h"}},
      {"first of several", "I?x", kFirst, {"ai", "bi", "ei", "h"}},
      {"first and open at the start", "*ix", kFirst, {"a", "b", "h"}},
      {"between others", "ix*", kMiddle, {"aix", "h"}},
      {"last", "*ix", kLast, {"a", "c", "h"}},
      {"last and open at the end", "i*x*", kLast, {"ai", "h"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(termsOf(c.word, c.place).prefixes(), c.prefixes);
  }
}

/// A compound, its marks written as / and ^.
class Compound {
 public:
  explicit Compound(std::string_view text) : term_("h") {
    for (const char c : text) term_ += c == '/' ? kPieceMark : c == '^' ? kWordMark : c;
  }
  KnownTerm known() const { return {term_, std::string_view(term_).substr(1)}; }

 private:
  std::string term_;
};

TEST(PatternTerms, AreTheWholeOfAPieceAndWhatIsInACompound) {
  const PatternTerms alone = termsOf("o*9", {});
  EXPECT_TRUE(alone.matches({"bo9", "o9"}));
  EXPECT_FALSE(alone.matches({"bo9x", "o9x"}));
  EXPECT_TRUE(alone.matches(Compound("on/9").known()));
  EXPECT_FALSE(alone.matches(Compound("no/9").known())) << "it begins within a word";
  EXPECT_TRUE(alone.matches(Compound("n^o/9/x").known()));
}

TEST(PatternTerms, OfAWordAmongOthersReachTheEndsOfACompound) {
  const Compound compound("ab/12/cd");
  const PlaceInPhrase first{.isFirst = true, .isLast = false};
  const PlaceInPhrase last{.isFirst = false, .isLast = true};
  EXPECT_TRUE(termsOf("1?cd", first).matches(compound.known()));
  EXPECT_FALSE(termsOf("a*2", first).matches(compound.known()));
  EXPECT_TRUE(termsOf("a*2", last).matches(compound.known()));
  EXPECT_FALSE(termsOf("1?cd", last).matches(compound.known()));
  EXPECT_EQ(PatternTerms::lengthOf(compound.known()), 3U);
  EXPECT_EQ(PatternTerms::lengthOf({"aab", "ab"}), 1U);
}

}  // namespace
}  // namespace vt
