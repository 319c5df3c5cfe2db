#include "metadata/text/Vocabulary.h"

#include <gtest/gtest.h>

#include "metadata/text/TextTable.h"

namespace vt {
namespace {

class VocabularyTest : public testing::Test {
 protected:
  void note(std::string_view text) {
    Transaction transaction(table_.database());
    forEachTerm(query::segmentContent(text), [&](const ContentTerm& term) {
      vocabulary_.note(term);
      return true;
    });
    ASSERT_FALSE(vocabulary_.keep());
    ASSERT_FALSE(transaction.commit());
  }

  /// The terms that begin with the prefix, a blank behind each.
  std::string termsFrom(std::string_view prefix) {
    std::string terms;
    EXPECT_FALSE(vocabulary_.forEach(
        prefix, [&](const KnownTerm& term) { terms.append(term.term).append(" "); }));
    return terms;
  }

  TextTable table_;
  Vocabulary vocabulary_ = Vocabulary::of(table_.database()).value();
};

TEST_F(VocabularyTest, HasEachTermOnceInOrder) {
  note("voice invoice voice");
  note("voice myInvoice");
  EXPECT_EQ(termsFrom("a"), "ainvoice amyinvoice avoice ");
  EXPECT_EQ(termsFrom("e"), "einvoice ");
}

TEST_F(VocabularyTest, VisitsWhatBeginsWithThePrefixAlone) {
  note("in inn invoice io");
  EXPECT_EQ(termsFrom("ain"), "ain ainn ainvoice ");
  EXPECT_EQ(termsFrom("ainn"), "ainn ");
  EXPECT_EQ(termsFrom("aj"), "");
}

TEST_F(VocabularyTest, HasNoPairsOfIdeographs) {
  note("日本");
  EXPECT_EQ(termsFrom("g"), "");
  EXPECT_EQ(termsFrom("b"), "b本 ");
}

TEST_F(VocabularyTest, HasLongPiecesWholeAsCompounds) {
  const std::string piece(kLongestTermText + 50, 'x');
  note(piece);
  EXPECT_EQ(termsFrom("a"), "");
  std::string whole;
  EXPECT_FALSE(vocabulary_.forEach("h", [&](const KnownTerm& term) { whole += term.text; }));
  EXPECT_EQ(whole, piece);
}

TEST_F(VocabularyTest, LosesNoTermWhenThereAreMoreThanItRemembers) {
  std::string text;
  constexpr int kTerms = 500'000;
  for (int i = 100'000; i < 100'000 + kTerms; ++i) text += std::to_string(i) + ' ';
  note(text);
  note(text);
  int count = 0;
  EXPECT_FALSE(vocabulary_.forEach("a", [&](const KnownTerm& /*term*/) { ++count; }));
  EXPECT_EQ(count, kTerms);
}

TEST_F(VocabularyTest, IsFullOfSomeMebibytesUntilTheyAreKept) {
  const std::string compound(10'000, 'x');
  int noted = 0;
  for (; !vocabulary_.isFull() && noted < 10'000; ++noted) {
    const std::string text = compound + std::to_string(noted);
    vocabulary_.note({contentTerm(TermKind::kCompound, text), text});
  }
  EXPECT_GT(noted, 100);
  EXPECT_LT(noted, 1000);
  ASSERT_FALSE(vocabulary_.keep());
  EXPECT_FALSE(vocabulary_.isFull());
  int count = 0;
  EXPECT_FALSE(vocabulary_.forEach("h", [&](const KnownTerm& /*term*/) { ++count; }));
  EXPECT_EQ(count, noted);
}

}  // namespace
}  // namespace vt
