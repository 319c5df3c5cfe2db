#include "metadata/query/QueryMatcher.h"

#include <gmock/gmock.h>

#include <iterator>
#include <limits>
#include <memory>

#include "metadata/query/QueryTesting.h"

namespace vt::query {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

QueryMatcher matcherOf(std::string_view query) {
  return QueryMatcher(parsed(query), shippedSchema(), leapDayNoon());
}

/// What a query asks of an item that has nothing.
std::vector<std::string> askedBy(std::string_view query) {
  TableItem item;
  item.satisfies(matcherOf(query));
  return item.asked;
}

}  // namespace

TEST(QueryMatcher, NamesEachAttributeOnce) {
  EXPECT_THAT(matcherOf("kMDItemTitle == a || kMDItemFSSize > 1 || kMDItemTitle == b").attributes(),
              ElementsAre("kMDItemTitle", "kMDItemFSSize"));
  EXPECT_THAT(matcherOf("com_x == 1 || * == a || ** == b || kMDItemTextContent == c").attributes(),
              IsEmpty());
}

TEST(QueryMatcher, TellsWhetherItMayReadText) {
  EXPECT_TRUE(matcherOf("kMDItemTextContent == a").needsTextContent());
  EXPECT_TRUE(matcherOf("!(true || ** == a)").needsTextContent());
  EXPECT_FALSE(matcherOf("* == a").needsTextContent());
}

TEST(QueryMatcher, AsksCheapThingsFirst) {
  EXPECT_THAT(askedBy("** == a || kMDItemTextContent == b || * == c || kMDItemTitle == d || "
                      "kMDItemFSSize > 1 || kMDItemFSName == e"),
              ElementsAre("kMDItemFSName", "kMDItemFSSize", "kMDItemTitle", "*", "text", "*"));
  EXPECT_THAT(askedBy("(kMDItemTextContent == b && kMDItemFSName != e) && kMDItemFSSize != 1"),
              ElementsAre("kMDItemFSName", "kMDItemFSSize", "text"));
}

TEST(QueryMatcher, AsksNothingThatCannotChangeTheAnswer) {
  EXPECT_THAT(askedBy("kMDItemFSName == a && kMDItemTextContent == b"),
              ElementsAre("kMDItemFSName"));
  EXPECT_THAT(askedBy("kMDItemFSName != a || kMDItemTextContent == b"),
              ElementsAre("kMDItemFSName"));
  EXPECT_THAT(askedBy("!(kMDItemFSName == a && kMDItemTitle == b) || kMDItemTextContent == c"),
              ElementsAre("kMDItemFSName"));
  EXPECT_THAT(askedBy("false && kMDItemFSName == a"), IsEmpty());
  EXPECT_THAT(askedBy("true || kMDItemFSName == a"), IsEmpty());
  EXPECT_THAT(askedBy("com_x == a && kMDItemFSName == a"), ElementsAre("kMDItemFSName"));
}

TEST(QueryMatcher, ReadsTextOnceForAnyNumberOfTerms) {
  TableItem item;
  item.setText("alpha beta");
  EXPECT_TRUE(
      item.satisfies(matcherOf("kMDItemTextContent == alpha && kMDItemTextContent == beta")));
  EXPECT_THAT(item.asked, ElementsAre("text"));
}

TEST(QueryMatcher, TakesArraysAndSingleValuesForEachOther) {
  TableItem item;
  item.set("kMDItemTitle", Array::make({"a", "b"})).set("kMDItemKeywords", "c");
  EXPECT_TRUE(matches("kMDItemTitle == b && kMDItemKeywords == c", item));
}

TEST(QueryMatcher, FindsNothingInValuesOfAnotherType) {
  TableItem item;
  item.set("kMDItemTitle", 5).set("kMDItemFSSize", "5").set("kMDItemDueDate", "2024-01-01");
  item.set("kMDItemKeywords", Array::make()).set("kMDItemAlbum", nullptr);
  EXPECT_FALSE(matches("kMDItemTitle == 5", item));
  EXPECT_FALSE(matches("kMDItemFSSize == 5", item));
  EXPECT_FALSE(matches("kMDItemDueDate > 0", item));
  EXPECT_FALSE(matches("kMDItemKeywords == \"*\"", item));
  EXPECT_FALSE(matches("kMDItemAlbum == \"*\"", item));
}

TEST(QueryMatcher, TakesANumberForADate) {
  TableItem item;
  item.set("kMDItemDueDate", 757382400.0);
  EXPECT_TRUE(matches("kMDItemDueDate == $time.iso(2025-01-01T00:00:00Z)", item));
}

TEST(QueryMatcher, BearsSecondsBeyondAllDates) {
  TableItem item = TableItem::parse("kMDItemDueDate=2024-01-01");
  EXPECT_TRUE(matches("kMDItemDueDate < 1e300 && kMDItemDueDate > -1e300", item));
  EXPECT_FALSE(matches("kMDItemDueDate > 1e300 || kMDItemDueDate < -1e300", item));
}

TEST(QueryMatcher, HoldsNoNumberEqualToNotANumber) {
  TableItem item;
  item.set("kMDItemAltitude", std::numeric_limits<double>::quiet_NaN());
  EXPECT_FALSE(matches("kMDItemAltitude == 0", item));
  EXPECT_FALSE(matches("kMDItemAltitude >= 0", item));
  EXPECT_FALSE(matches("kMDItemAltitude <= 0", item));
}

TEST(QueryMatcher, MayOutliveTheQueryAndMove) {
  TableItem item = TableItem::parse("kMDItemTitle=a");
  auto matcher = std::make_unique<QueryMatcher>(matcherOf("kMDItemTitle == a"));
  const QueryMatcher moved = std::move(*matcher);
  matcher.reset();
  EXPECT_TRUE(item.satisfies(moved));
}

TEST(QueryMatcher, EvaluatesDeepAndWideTrees) {
  std::string deep;
  for (int i = 0; i < 127; ++i) deep += "!(";
  deep += "kMDItemTitle == a";
  deep.append(127, ')');
  TableItem item = TableItem::parse("kMDItemTitle=a");
  EXPECT_FALSE(matches(deep, item));

  std::string wide = "kMDItemTitle=b";
  for (int i = 0; i < 4000; ++i) wide += "||a=b";
  EXPECT_FALSE(matches(wide, item));
  EXPECT_TRUE(matches(wide + "||kMDItemTitle=a", item));
}

TEST(QueryMatcher, AgreesWithTruthTables) {
  // Every expression of up to three different terms joined in these ways, for all their values.
  const char* shapes[] = {
      "%a && %b && %c",     "%a || %b || %c",       "%a && %b || %c",
      "%a || %b && %c",     "(%a || %b) && %c",     "!(%a && %b) || %c",
      "!(%a || %b) && !%c", "!(!%a && !%b && !%c)", "(%a && !%b || !%a && %b) && !(%c && true)"};
  const auto expected = [](std::size_t shape, bool a, bool b, bool c) {
    switch (shape) {
      case 0:
        return a && b && c;
      case 1:
        return a || b || c;
      case 2:
        return (a && b) || c;
      case 3:
        return a || (b && c);
      case 4:
        return (a || b) && c;
      case 5:
        return !(a && b) || c;
      case 6:
        return !(a || b) && !c;
      case 7:
        return a || b || c;
      default:
        return a != b && !c;
    }
  };
  for (std::size_t shape = 0; shape < std::size(shapes); ++shape) {
    for (unsigned values = 0; values < 8; ++values) {
      std::string query;
      for (const char* at = shapes[shape]; *at != '\0'; ++at) {
        if (*at != '%') {
          query += *at;
          continue;
        }
        const char name = *++at;
        const char* attribute = name == 'a'   ? "kMDItemTextContent"
                                : name == 'b' ? "kMDItemFSName"
                                              : "kMDItemTitle";
        query += std::string(attribute) + " == x";
      }
      TableItem item;
      item.setText((values & 1U) != 0 ? "x" : "y");
      item.set("kMDItemFSName", (values & 2U) != 0 ? "x" : "y");
      item.set("kMDItemTitle", (values & 4U) != 0 ? "x" : "y");
      EXPECT_EQ(matches(query, item),
                expected(shape, (values & 1U) != 0, (values & 2U) != 0, (values & 4U) != 0))
          << query << " with " << values;
    }
  }
}

}  // namespace vt::query
