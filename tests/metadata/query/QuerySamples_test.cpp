// The samples of the language: what is a query and what is not, and which files match.
#include <gtest/gtest.h>

#include "metadata/query/QueryPrinter.h"
#include "metadata/query/QueryTesting.h"
#include "support/Places.h"

namespace vt::query {

namespace {

/// The rows of a table in the test data, without its heading.
std::vector<std::vector<std::string>> rowsOf(const char* name, std::size_t columns) {
  const std::filesystem::path path = std::filesystem::path(testDataFolder()) / "query" / name;
  std::vector<std::vector<std::string>> rows;
  for (const std::string& line : splitText(readWhole(path), "\n")) {
    if (line.empty()) continue;
    rows.push_back(splitText(line, "\t"));
    if (rows.back().size() != columns) throw std::runtime_error("bad row: " + line);
  }
  rows.erase(rows.begin());
  return rows;
}

}  // namespace

TEST(QuerySamples, AreAcceptedOrRefusedAsTheirVerdictSays) {
  const auto rows = rowsOf("samples.tsv", 3);
  ASSERT_EQ(rows.size(), 144U);
  for (const auto& row : rows) {
    SCOPED_TRACE(row[0] + " (" + row[2] + ")");
    const auto query = parseQuery(row[0], shippedSchema());
    EXPECT_EQ(query.hasValue(), row[1] == "valid");
    if (!query) {
      EXPECT_LE(query.error().offset, row[0].size());
    }
  }
}

TEST(QuerySamples, MayHaveAnyBlanksBetweenTokens) {
  EXPECT_EQ(parsed("  kMDItemTitle\t==\n\r \"a\"  "), parsed("kMDItemTitle==\"a\""));
}

TEST(QuerySamples, ComeBackFromTheirPrintedForm) {
  for (const auto& row : rowsOf("samples.tsv", 3)) {
    if (row[1] != "valid") continue;
    SCOPED_TRACE(row[0]);
    const Query query = parsed(row[0]);
    EXPECT_EQ(parsed(printQuery(query)), query) << printQuery(query);
  }
}

TEST(QuerySamples, MatchTheFilesOfTheirTable) {
  const TimeZone utc("UTC");
  const auto rows = rowsOf("matches.tsv", 3);
  ASSERT_GT(rows.size(), 200U);
  for (const auto& row : rows) {
    SCOPED_TRACE(row[0] + "  on  " + row[1]);
    TableItem item = TableItem::parse(row[1]);
    EXPECT_EQ(matches(row[0], item), row[2] == "1");
    // Of a query and its negation exactly one holds.
    EXPECT_EQ(matches("!(" + row[0] + ")", item), row[2] == "0");
  }
}

}  // namespace vt::query
