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
  forEachTerm(query::segmentContent(text), [&](const ContentTerm& term) {
    if (!terms.empty()) terms += term.isAtNewPlace ? ' ' : '+';
    for (const char c : term.term) terms += c == kPieceMark ? '/' : c == kWordMark ? '^' : c;
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
      {"digits within", "plan9b", "aplan+hplan/9/b b9 bb"},
      {"words by case", "MyWindow", "amywindow+cmy+ewindow"},
      {"three words by case", "oneTwoSix", "aonetwosix+cone+conetwo+ftwo+etwosix+esix"},
      {"words by case behind a digit", "2dView", "a2+h2/d^view bdview+dd+eview"},
      {"ideographs", "日本語", "a日+h日/本/語+g日本 b本+g本語 b語"},
      {"ideographs apart", "日 本", "a日 a本"},
      {"an ideograph among letters", "x日y", "ax+hx/日/y b日 by"},
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
  const std::size_t compound = terms.find("+h" + piece + '\x1F');
  EXPECT_EQ(compound, kLongestTermText + 18);
  EXPECT_EQ(terms.size(), 2 * compound + 1);
  EXPECT_NE(terms, termsOf(piece + "z"));
}

TEST(ContentTerms, AreFewEvenOfLettersThatChangeCaseAllTheTime) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "aA";
  std::size_t count = 0;
  forEachTerm(query::segmentContent(text), [&](const ContentTerm& /*term*/) {
    ++count;
    return true;
  });
  // And one for the compound that it is.
  EXPECT_EQ(count, query::kMostWordsByCase * (query::kMostWordsByCase + 1) / 2 + 1);
}

TEST(ContentTerms, OfACompoundGiveWhatStandsInTheContent) {
  for (std::string_view text : {"plan9b", "2dView", "日本語x", "myWindow12Größe"}) {
    SCOPED_TRACE(text);
    query::SegmentedText whole;
    std::size_t places = 0;
    const query::SegmentedText content = query::segmentContent(std::string(" ").append(text) + " ");
    forEachTerm(content, [&](const ContentTerm& term) {
      places += term.isAtNewPlace ? 1 : 0;
      if (term.kind() == TermKind::kCompound) whole = contentOfCompound(term.text);
      return true;
    });
    EXPECT_EQ(whole.units, content.units);
    EXPECT_EQ(whole.properties, content.properties);
    forEachTerm(content, [&](const ContentTerm& term) {
      if (term.kind() == TermKind::kCompound) {
        EXPECT_EQ(piecesOfCompound(term.text), places);
      }
      return true;
    });
  }
}

TEST(ContentTerms, EndWhenNoMoreAreTaken) {
  int taken = 0;
  EXPECT_FALSE(forEachTerm(query::segmentContent("one two six"),
                           [&](const ContentTerm& /*term*/) { return ++taken < 2; }));
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
