#include "metadata/query/QueryParser.h"

#include <gtest/gtest.h>

#include "metadata/query/QueryTesting.h"

namespace vt::query {

namespace {

std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

std::optional<QueryError> errorOf(std::string_view text) {
  const auto query = parseQuery(text, shippedSchema());
  if (query) return std::nullopt;
  return query.error();
}

}  // namespace

TEST(QueryParser, SaysWhatIsWrongAndWhere) {
  using enum QueryErrorKind;
  struct Case {
    std::string_view query;
    QueryErrorKind kind;
    std::size_t offset;
    std::string_view expected;  // a part of it
  };
  using namespace std::string_view_literals;
  const Case cases[] = {
      {"", kEmpty, 0, "a query"},
      {" \t\r\n", kEmpty, 4, "a query"},
      {"kMDItemFSName", kSyntax, 13, "operator"},
      {"kMDItemFSName ==", kSyntax, 16, "a value"},
      {"== \"x\"", kSyntax, 0, "an attribute"},
      {"kMDItemFSName \"x\"", kSyntax, 14, "operator"},
      {"kMDItemFSName === \"x\"", kSyntax, 14, "operator"},
      {"kMDItemFSSize => 5", kSyntax, 14, "operator"},
      {"kMDItemFSSize =< 5", kSyntax, 14, "operator"},
      {"kMDItemFSSize <> 5", kSyntax, 14, "operator"},
      {"kMDItemFSName == \"x", kLexical, 17, "closed"},
      {"kMDItemFSName == 'x\"", kLexical, 17, "closed"},
      {"kMDItemFSName == \"x\\\"", kLexical, 17, "closed"},
      {"kMDItemFSName == \"x\\", kLexical, 17, "closed"},
      {"kMDItemFSName == x\"", kSyntax, 18, "&& or ||"},
      {"kMDItemFSName == \"x\" &&", kSyntax, 23, "an attribute"},
      {"|| kMDItemFSName == \"x\"", kSyntax, 0, "an attribute"},
      {"kMDItemFSName == \"x\" & true", kLexical, 21, "&& or ||"},
      {"kMDItemFSName == \"x\" | true", kLexical, 21, "&& or ||"},
      {"kMDItemFSName == \"x\" AND true", kSyntax, 21, "&& or ||"},
      {"NOT kMDItemFSName == \"x\"", kSyntax, 4, "operator"},
      {"(kMDItemFSName == \"x\"", kSyntax, 21, "closing parenthesis"},
      {"kMDItemFSName == \"x\")", kSyntax, 20, "&& or ||"},
      {"()", kSyntax, 1, "an attribute"},
      {"(true) (true)", kSyntax, 7, "&& or ||"},
      {"true true", kSyntax, 5, "&& or ||"},
      {"true == 1", kSyntax, 5, "&& or ||"},
      {"kMDItemFSName == \"x\"q", kValue, 20, "modifiers"},
      {"kMDItemFSName == \"x\"cdq", kValue, 22, "modifiers"},
      {"kMDItemFSName == \"x\"cd d", kSyntax, 23, "&& or ||"},
      {"kMDItemFSName ==[z] \"x\"", kValue, 17, "modifiers"},
      {"kMDItemFSName ==[] \"x\"", kValue, 17, "modifiers"},
      {"kMDItemFSName ==[c \"x\"", kValue, 18, "modifiers"},
      {"kMDItemFSName ==[c", kSyntax, 18, "bracket"},
      {"kMDItemTitle < \"m\"", kType, 0, "numbers or dates"},
      {"* < 5", kType, 0, "numbers or dates"},
      {"kMDItemTitle == $time.now", kType, 16, "text"},
      {"kMDItemFSSize == $time.now", kType, 17, "a number"},
      {"InRange(kMDItemFSSize,1)", kArity, 23, "two bounds"},
      {"InRange(kMDItemFSSize)", kArity, 21, "two bounds"},
      {"InRange(kMDItemFSSize,1,2,3)", kArity, 25, "closing parenthesis"},
      {"InRange(kMDItemFSSize,1,2", kSyntax, 25, "closing parenthesis"},
      {"InRange(\"kMDItemFSSize\",1,2)", kSyntax, 8, "an attribute"},
      {"InRange(kMDItemTitle,\"a\",\"b\")", kType, 8, "numbers or dates"},
      {"InRange(kMDItemFSSize,x,2)", kValue, 22, "a number"},
      {"InRange(com_x,x,2)", kValue, 14, "a number"},
      {"InRange(kMDItemFSSize,\"1\"c,2)", kValue, 22, "modifiers"},
      {"Between(kMDItemFSSize,1,2)", kSyntax, 7, "operator"},
      {"kMDItemDueDate > $time.fortnight", kValue, 23, "today"},
      {"kMDItemDueDate > $time", kSyntax, 17, "$time."},
      {"kMDItemDueDate > $time.today(x)", kValue, 29, "whole number"},
      {"kMDItemDueDate > $time.today(1.5)", kValue, 30, "no unit"},
      {"kMDItemDueDate > $time.today(-7y)", kValue, 31, "no unit"},
      {"kMDItemDueDate > $time.now(-7d)", kValue, 29, "no unit"},
      {"kMDItemDueDate > $time.today(7", kSyntax, 30, "closing parenthesis"},
      {"kMDItemDueDate > $time.today(9223372036854775808)", kValue, 29, "64 bits"},
      {"kMDItemDueDate > $time.yesterday(2)", kArity, 33, "no number"},
      {"kMDItemDueDate > $time.last_week(2)", kArity, 33, "no number"},
      {"kMDItemDueDate > $time.iso()", kArity, 27, "a date"},
      {"kMDItemDueDate > $time.iso", kArity, 26, "a date"},
      {"kMDItemDueDate > $time.iso(2024-01-01", kSyntax, 26, "closed"},
      {"kMDItemDueDate > $time.iso(tomorrow)", kValue, 27, "exists"},
      {"kMDItemDueDate > $time.iso(2024-02-30T00:00:00Z)", kValue, 27, "exists"},
      {"kMDItemDueDate > 2024-01-01", kValue, 17, "$time"},
      {"kMDItemFSSize > 12abc", kValue, 16, "a number"},
      {"kMDItemFSSize > nan", kValue, 16, "a number"},
      {"kMDItemFSSize > Infinity", kValue, 16, "a number"},
      {"kMDItemFSSize > 0x10", kValue, 16, "a number"},
      {"kMDItemFSSize > \"1,000\"", kValue, 16, "a number"},
      {"kMDItemFSSize > 1e999", kValue, 16, "a number"},
      {"kMDItemFSSize == \"1*\"", kValue, 17, "a number"},
      {"kMDItemFSSize < \"*\"", kValue, 16, "a number"},
      {"kMDItemFSInvisible == maybe", kValue, 22, "true"},
      {"5 < kMDItemFSSize", kSyntax, 0, "an attribute"},
      {"kMDItemFSName == \"x\";", kLexical, 20, "&& or ||"},
      {"kMDItemFSName == \"a\x01\"", kLexical, 19, "control"},
      {"kMDItemFSName == \"a\0\""sv, kLexical, 19, "control"},
      {"kMDItemFSName == \"a\xFF\"", kLexical, 19, "UTF-8"},
      {"kMDItemFSName == a\xC3", kLexical, 18, "UTF-8"},
      {"true \x7F", kLexical, 5, "&& or ||"},
      {"\xFF", kLexical, 0, "an attribute"},
      {"!", kSyntax, 1, "an attribute"},
      {"!= 5", kSyntax, 1, "an attribute"},
      {"kMDItemTitle == **", kSyntax, 17, "&& or ||"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.query);
    const auto error = errorOf(c.query);
    if (!error) {
      ADD_FAILURE() << "accepted";
      continue;
    }
    EXPECT_EQ(error->kind, c.kind) << describeQueryError(*error);
    EXPECT_EQ(error->offset, c.offset) << describeQueryError(*error);
    EXPECT_NE(error->expected.find(c.expected), std::string::npos) << describeQueryError(*error);
    EXPECT_TRUE(c.query.substr(error->offset).starts_with(error->excerpt));
  }
}

TEST(QueryParser, AcceptsUpToItsLimitsAndNoMore) {
  const std::string term = "kMDItemTitle=\"a\"";
  const std::string wildcards = repeated("a*", 63);
  const std::string rest(kMaximumQueryBytes - 4, ' ');
  struct Case {
    const char* what;
    std::string within;
    std::string beyond;
    std::size_t offset;
  };
  const Case cases[] = {
      {"bytes", "true" + rest, "true " + rest, 65536},
      {"parentheses", repeated("(", 256) + "true" + repeated(")", 256),
       repeated("(", 257) + "true" + repeated(")", 257), 256},
      {"negations", repeated("!", 256) + "true", repeated("!", 257) + "true", 256},
      {"terms", repeated("a=1||", 4095) + "a=1", repeated("a=1||", 4096) + "a=1", 20480},
      {"wildcards", "a=\"" + wildcards + "?\"", "a=\"" + wildcards + "?*\"", 130},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_FALSE(errorOf(c.within));
    const auto error = errorOf(c.beyond);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, QueryErrorKind::kLimit);
    EXPECT_EQ(error->offset, c.offset);
  }
}

TEST(QueryParser, CountsOnlyWhatIsOpenAsNested) {
  EXPECT_FALSE(errorOf(repeated("(true)&&", 2000) + "!(true)"));
}

TEST(QueryParser, CountsAnEscapedStarAsNoWildcard) {
  EXPECT_FALSE(errorOf("a=\"" + repeated("\\*", 1000) + "\""));
}

TEST(QueryParser, ReadsAQueryOfTheGreatestLength) {
  std::string text;
  while (text.size() + 40 < kMaximumQueryBytes) text += "kMDItemTitle == \"caf\u00E9 x\"cd || ";
  text += "true";
  const auto query = parseQuery(text, shippedSchema());
  ASSERT_TRUE(query);
  EXPECT_EQ(query->text(), text);
}

TEST(QueryParser, WarnsOnceOfEachUnknownAttribute) {
  const Query query =
      parsed("com_b == 1 || com_a == 2 && (com_b == 3 || kMDItemTitle == \"x\" || * == 1)");
  const std::vector<QueryWarning> expected = {{"com_b", 0}, {"com_a", 14}};
  EXPECT_EQ(query.warnings(), expected);
}

TEST(QueryParser, AllowsAnythingOfAnUnknownAttribute) {
  EXPECT_FALSE(errorOf("com_x < \"m\" && com_x == $time.today && InRange(com_x, 1, $time.now)"));
}

TEST(QueryParser, TakesWordsForAttributesWhereAnOperatorFollows) {
  EXPECT_FALSE(errorOf("InRange == 1 && inRange = x && a.b:c-d_1 == y/z"));
}

TEST(QueryParser, JoinsChainsIntoOneNode) {
  EXPECT_EQ(parsed("a=1 && (b=2 && c=3)"), parsed("(a=1 && b=2) && c=3"));
  EXPECT_EQ(parsed("(a=1 && b=2) && (c=3 && d=4)"), parsed("a=1 && b=2 && c=3 && d=4"));
  EXPECT_EQ(parsed("a=1 || (b=2 || c=3)"), parsed("a=1 || b=2 || c=3"));
  EXPECT_FALSE(parsed("a=1 && b=2 && c=3") == parsed("a=1 && c=3 && b=2"));
  EXPECT_FALSE(parsed("a=1 && b=2") == parsed("a=1 || b=2"));
  EXPECT_FALSE(parsed("a=1 && b=2") == parsed("a=1 && b=2 && c=3"));
  EXPECT_FALSE(parsed("!a=1") == parsed("a=1"));
}

}  // namespace vt::query
