#include "metadata/text/TextIndex.h"

#include <gtest/gtest.h>

#include "metadata/text/TextTable.h"

namespace vt {
namespace {

using Numbers = std::vector<std::size_t>;

ContentQuery asking(std::string_view pattern) { return contentQueryOf(pattern, 0).value(); }

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
