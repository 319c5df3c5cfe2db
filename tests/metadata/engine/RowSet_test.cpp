#include "metadata/engine/RowSet.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace vt {
namespace {

std::set<std::size_t> rowsIn(const RowSet& rows) {
  std::set<std::size_t> result;
  rows.forEach([&](std::size_t row) {
    EXPECT_TRUE(rows.contains(row));
    result.insert(row);
  });
  EXPECT_EQ(rows.count(), result.size());
  EXPECT_EQ(rows.isEmpty(), result.empty());
  return result;
}

TEST(RowSet, AgreesWithASetOverRandomOperations) {
  constexpr std::size_t kSize = 150;
  std::mt19937 random(20261121);
  const auto place = [&] { return static_cast<std::size_t>(random() % (kSize + 1)); };
  const auto someRows = [&] {
    const std::size_t first = place();
    RowSet rows(kSize, first, std::max(first, place()));
    if (random() % 2 == 0) rows.keepIf([&](std::size_t) { return random() % 3 == 0; });
    return rows;
  };
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE(round);
    RowSet rows = someRows();
    const RowSet other = someRows();
    const std::set<std::size_t> before = rowsIn(rows);
    const std::size_t first = place();
    const std::size_t last = std::max(first, place());
    const int operation = round % 4;
    if (operation == 0) rows.add(other);
    if (operation == 1) rows.remove(other);
    if (operation == 2) rows.keepRange(first, last);
    if (operation == 3) rows.keepIf([&](std::size_t row) { return other.contains(row); });
    std::set<std::size_t> expected;
    for (std::size_t row = 0; row < kSize; ++row) {
      const bool was = before.contains(row);
      const bool inOther = other.contains(row);
      const bool isExpected[] = {was || inOther, was && !inOther, was && row >= first && row < last,
                                 was && inOther};
      if (isExpected[operation]) expected.insert(row);
    }
    ASSERT_EQ(rowsIn(rows), expected) << "operation " << operation;
  }
}

}  // namespace
}  // namespace vt
