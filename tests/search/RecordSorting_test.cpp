#include "search/RecordSorting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/Array.h"

namespace vt {
namespace {

using testing::ElementsAre;

/// One record per value; nothing leaves the key out. "id" is the record's place.
std::shared_ptr<ObjectArray<Dictionary>> records(const std::vector<std::optional<Value>>& values) {
  auto list = ObjectArray<Dictionary>::make();
  for (const auto& value : values) {
    auto record = Dictionary::make({{"id", list->size()}});
    if (value) record->set("key", *value);
    list->append(record);
  }
  return list;
}

std::vector<int> order(const std::vector<std::optional<Value>>& values, bool descending) {
  std::vector<int> ids;
  const auto sorted = sortedRecords(*records(values), "key", descending);
  for (const auto& record : *sorted) {
    ids.push_back(record->find("id")->intValue());
  }
  return ids;
}

TEST(RecordSorting, ComparesTextWithoutRegardToCase) {
  EXPECT_THAT(order({"cherry", "Banana", "apple", "BANANA"}, /*descending=*/false),
              ElementsAre(2, 1, 3, 0));
  EXPECT_THAT(order({"Zebra", "äpfel", "apfel"}, /*descending=*/false), ElementsAre(2, 1, 0));
}

TEST(RecordSorting, KeepsEqualRecordsInOrderInBothDirections) {
  EXPECT_THAT(order({2, 1, 2, 1}, /*descending=*/false), ElementsAre(1, 3, 0, 2));
  EXPECT_THAT(order({2, 1, 2, 1}, /*descending=*/true), ElementsAre(0, 2, 1, 3));
}

TEST(RecordSorting, PutsAbsentValuesFirstAscending) {
  EXPECT_THAT(order({2, std::nullopt, 1}, /*descending=*/false), ElementsAre(1, 2, 0));
  EXPECT_THAT(order({2, std::nullopt, 1}, /*descending=*/true), ElementsAre(0, 2, 1));
}

TEST(RecordSorting, LetsTheFirstRecordDecideHowTextCompares) {
  // By code point capitals come first; by the language they do not.
  EXPECT_THAT(order({1, "b", "A", "a", "B"}, /*descending=*/false), ElementsAre(0, 2, 4, 3, 1));
  EXPECT_THAT(order({"b", 1, "A", "a", "B"}, /*descending=*/false), ElementsAre(1, 2, 3, 0, 4));
  EXPECT_THAT(order({std::nullopt, "a", "B"}, /*descending=*/false), ElementsAre(0, 2, 1));
}

TEST(RecordSorting, ComparesNumbersAndDatesByTheirValue) {
  EXPECT_THAT(order({10, 9.5, true, std::uint64_t{1} << 63, -1}, /*descending=*/false),
              ElementsAre(4, 2, 1, 0, 3));
  const auto date = [](int seconds) { return Value(Date{std::chrono::seconds{seconds}}); };
  EXPECT_THAT(order({date(5), date(-5), date(0)}, /*descending=*/true), ElementsAre(0, 2, 1));
}

TEST(RecordSorting, LeavesArraysAsTheyAre) {
  EXPECT_THAT(order({Array::make({"b"}), Array::make({"a"}), Array::make({})},
                    /*descending=*/true),
              ElementsAre(0, 1, 2));
}

TEST(RecordSorting, LeavesTheGivenListAlone) {
  const auto list = records({2, 1});
  const auto sorted = sortedRecords(*list, "key", /*descending=*/false);
  EXPECT_NE(sorted, list);
  EXPECT_EQ(list->at(0)->get("id"), Value(0));
  EXPECT_TRUE(sortedRecords(*records({}), "key", /*descending=*/false)->empty());
}

}  // namespace
}  // namespace vt
