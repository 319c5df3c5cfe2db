#include "metadata/text/TextIndex.h"

#include <gtest/gtest.h>

#include "metadata/text/TextTable.h"

namespace vt {
namespace {

using Numbers = std::vector<std::size_t>;

ContentQuery asking(std::string_view pattern) { return contentQueryOf(pattern, 0); }

TEST(TextIndex, FindsWordsBeginningsAndPhrases) {
  TextTable table;
  table.add("The budget of 2024");
  table.add("A budgetary plan, 2024 budget");
  table.add("MyBudgetPlan");
  EXPECT_EQ(table.find(asking("budget")), (Numbers{1, 2, 3}));
  EXPECT_EQ(table.find(asking("bud*")), (Numbers{1, 2, 3}));
  EXPECT_EQ(table.find(asking("budgeta*")), Numbers{2});
  EXPECT_EQ(table.find(asking("budget 2024")), Numbers{});
  EXPECT_EQ(table.find(asking("2024 budget")), Numbers{2});
  EXPECT_EQ(table.find(asking("budgetplan")), Numbers{3});
  EXPECT_EQ(table.find(ContentQuery()), Numbers{});
}

TEST(TextIndex, FindsPatternsWhereverTheirWildcardsAre) {
  TextTable table;
  table.add("An invoice, by voice");
  table.add("inv2ice 9");
  table.add("MyInvoiceBook 2024x");
  table.add("日本語 Größe");
  struct Case {
    std::string_view pattern;
    Numbers found;
  };
  const Case cases[] = {
      {"inv*ice", {1, 2, 3}},  // a wildcard takes digits, and begins and ends where words do
      {"*voice", {1, 3}},     {"*voic*", {1, 3}}, {"?nvoice", {1, 3}},
      {"inv?ice", {1, 2, 3}}, {"by *oic*", {1}},  {"*ice 9", {2}},
      {"an i*e b?", {1}},     {"a* v*", {}},  // not one behind the other
      {"2?24*", {3}},         {"2*x", {3}},       {"日?語", {4}},
      {"日*語", {4}},         {"gr????", {4}},  // ß is two
      {"gr???", {}},          {"*", {}},          {"??????????????", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.pattern);
    EXPECT_EQ(table.find(asking(c.pattern)), c.found);
  }
}

TEST(TextIndex, FindsPatternsInPiecesOfAnyLength) {
  TextTable table;
  const std::string half(300, 'x');
  table.add(half + "needle" + half);
  table.add("Straw" + half + "9" + half);
  EXPECT_EQ(table.find(asking("*needle*")), Numbers{1});
  EXPECT_EQ(table.find(asking(half + "needle*")), Numbers{1});
  EXPECT_EQ(table.find(asking("str*x9*")), Numbers{2});
  EXPECT_EQ(table.find(asking("*x")), (Numbers{1, 2}));
  EXPECT_EQ(table.find(asking("*" + half + "?")), Numbers{2});
}

TEST(TextIndex, GivesNoDocumentBeyondTheEndThatIsAskedFor) {
  TextTable table;
  table.add("word");
  table.add("word");
  const Result<Bitmap, StoreError> found = table.index().documents(asking("word"), 2);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->count(), 1U);
}

TEST(TextIndex, FindsTheSameOnceAllIsMerged) {
  TextTable table;
  for (int i = 0; i < 50; ++i) table.add(i % 2 == 0 ? "even word" : "odd word");
  const Numbers before = table.find(asking("odd"));
  EXPECT_FALSE(table.index().mergeAll());
  EXPECT_EQ(table.find(asking("odd")), before);
  EXPECT_FALSE(table.index().check());
}

}  // namespace
}  // namespace vt
