#include "metadata/text/ContentTerms.h"

#include <gtest/gtest.h>

#include "foundation/TextFolding.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

using query::CharacterClass;

/// The terms, a blank before each place and a plus between those at one place.
std::string termsOf(std::string_view text) {
  std::string terms;
  forEachTerm(query::segmentContent(text), [&](std::string_view term, bool isFirst) {
    if (!terms.empty()) terms += isFirst ? ' ' : '+';
    terms += term;
    return true;
  });
  return terms;
}

TEST(ContentTerms, AreThePiecesBetweenSeparatorsAndDigits) {
  struct Case {
    const char* what;
    std::string_view text;
    std::string_view terms;
  };
  const Case cases[] = {
      {"empty", "", ""},
      {"separators alone", " \n--", ""},
      {"words", "The Budget, 2024", "athe abudget a2024"},
      {"folded", "GRÖSSE Straße", "agrosse astrasse"},
      {"digits within", "plan9b", "aplan b9 bb"},
      {"words by case", "MyWindow", "amywindow+cmy+ewindow"},
      {"three words by case", "oneTwoSix", "aonetwosix+cone+conetwo+ftwo+etwosix+esix"},
      {"words by case behind a digit", "2dView", "a2 bdview+dd+eview"},
      {"ideographs", "日本語", "a日+g日本 b本+g本語 b語"},
      {"ideographs apart", "日 本", "a日 a本"},
      {"an ideograph among letters", "x日y", "ax b日 by"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(termsOf(c.text), c.terms);
  }
}

TEST(ContentTerms, OfALongPieceEndInAChecksum) {
  const std::string piece(kLongestTermText, 'x');
  EXPECT_EQ(termsOf(piece), "a" + piece);
  const std::string terms = termsOf(piece + "y");
  EXPECT_TRUE(terms.starts_with("a" + piece + '\x1F')) << terms;
  EXPECT_EQ(terms.size(), kLongestTermText + 18);
  EXPECT_NE(terms, termsOf(piece + "z"));
}

TEST(ContentTerms, AreFewEvenOfLettersThatChangeCaseAllTheTime) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "aA";
  std::size_t count = 0;
  forEachTerm(query::segmentContent(text), [&](std::string_view /*term*/, bool /*isFirst*/) {
    ++count;
    return true;
  });
  EXPECT_EQ(count, query::kMostWordsByCase * (query::kMostWordsByCase + 1) / 2);
}

TEST(ContentTerms, EndWhenNoMoreAreTaken) {
  int taken = 0;
  EXPECT_FALSE(
      forEachTerm(query::segmentContent("one two six"),
                  [&](std::string_view /*term*/, bool /*isFirst*/) { return ++taken < 2; }));
  EXPECT_EQ(taken, 2);
}

// What divides words without regard to case must be the same before and after folding, or a text
// that is looked for would be divided otherwise than the one that it is in.
TEST(ContentTerms, RestOnFoldingThatKeepsLettersLettersAndDigitsDigits) {
  for (char32_t given = 1; given <= 0x10FFFF; ++given) {
    if (given >= 0xD800 && given <= 0xDFFF) continue;
    const CharacterClass before = query::classOf(given);
    if (before == CharacterClass::kSeparator) continue;
    std::string folded;
    appendFolded(given, Folding::kCaseAndMarks, folded);
    ASSERT_EQ(folded.empty(), before == CharacterClass::kMark) << std::hex << std::uint32_t{given};
    for (const char32_t c : composedText(folded)) {
      const CharacterClass after = query::classOf(c);
      ASSERT_TRUE(after != CharacterClass::kSeparator && after != CharacterClass::kMark &&
                  (before == CharacterClass::kDigit) == (after == CharacterClass::kDigit) &&
                  (before == CharacterClass::kIdeograph) == (after == CharacterClass::kIdeograph))
          << std::hex << std::uint32_t{given};
    }
  }
}

}  // namespace
}  // namespace vt
