#include "metadata/query/QueryError.h"

#include <gtest/gtest.h>

#include "metadata/query/QueryTesting.h"

namespace vt::query {

namespace {

QueryError at(std::size_t offset) { return {QueryErrorKind::kSyntax, offset, "a value", "x"}; }

}  // namespace

TEST(QueryError, IsDescribedInOneLine) {
  EXPECT_EQ(describeQueryError({QueryErrorKind::kLexical, 20, "&& or || or the end", ";"}),
            "lexical error at byte 20: expected && or || or the end, found `;`");
  EXPECT_EQ(describeQueryError({QueryErrorKind::kEmpty, 0, "a query", ""}),
            "empty error at byte 0: expected a query, found the end");
  EXPECT_EQ(describeQueryError({QueryErrorKind::kLexical, 0, "a query", "a\n\x01\xFF"}),
            "lexical error at byte 0: expected a query, found `a\\x0A\\x01\\xFF`");
}

TEST(QueryError, PutsTheCaretUnderThePlace) {
  struct Case {
    const char* what;
    std::string_view query;
    std::size_t offset;
    std::string_view shown;
  };
  const Case cases[] = {
      {"start", "abc", 0, "abc\n^"},
      {"middle", "abc", 1, "abc\n ^"},
      {"end", "abc", 3, "abc\n   ^"},
      {"empty", "", 0, "\n^"},
      {"after two-byte characters", "öäx", 4, "öäx\n  ^"},
      {"after a wide character", "日x", 3, "日x\n  ^"},
      {"after a combining mark", "e\u0301x", 3, "e\u0301x\n ^"},
      {"after a control byte", "a\tb", 2, "a\\x09b\n     ^"},
      {"at a byte that is not UTF-8", "a\xFFz", 1, "a\\xFFz\n ^"},
      {"beyond the end", "ab", 9, "ab\n  ^"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(renderQueryError(c.query, at(c.offset)), c.shown);
  }
}

TEST(QueryError, CutsLongQueriesAroundThePlace) {
  std::string query(200, 'a');
  query[100] = '!';
  const std::string shown = renderQueryError(query, at(100), 40);
  const auto lines = splitText(shown, "\n");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].size(), 40U);
  EXPECT_TRUE(lines[0].starts_with("...a"));
  EXPECT_TRUE(lines[0].ends_with("a..."));
  EXPECT_EQ(lines[0][lines[1].size() - 1], '!');

  EXPECT_TRUE(renderQueryError(query, at(0), 40).starts_with("aaaa"));
  EXPECT_EQ(splitText(renderQueryError(query, at(200), 40), "\n")[0].substr(0, 4), "...a");
}

TEST(QueryError, PointsIntoEveryQueryAtEveryPlace) {
  std::string query = "ö日\t\xFF";
  while (query.size() < 300) query += query;
  for (std::size_t offset = 0; offset <= query.size(); ++offset) {
    const auto lines = splitText(renderQueryError(query, at(offset), 60), "\n");
    ASSERT_EQ(lines.size(), 2U);
    ASSERT_LE(lines[1].size(), 61U);
    ASSERT_EQ(lines[1].back(), '^');
  }
}

}  // namespace vt::query
