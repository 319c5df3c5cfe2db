#include "search/DateAbleSortComparator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace vt {
namespace {

const Value kOld{Date{std::chrono::seconds{100}}};
const Value kNew{Date{std::chrono::seconds{200}}};

TEST(DateAbleSortComparator, PutsTheNewestFirstAndAbsentDatesLast) {
  struct Case {
    const char* what;
    const Value* a;
    const Value* b;
    int order;
  };
  const Case cases[] = {
      {"newer before older", &kNew, &kOld, -1},     {"older after newer", &kOld, &kNew, 1},
      {"the same date", &kOld, &kOld, 0},           {"absent after a date", nullptr, &kOld, 1},
      {"a date before absent", &kOld, nullptr, -1}, {"two absent ones", nullptr, nullptr, 1},
  };
  const DateAbleSortContext context{.dateIndex = 0, .attributeCount = 1};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(dateAbleSortComparatorFunction(&c.a, &c.b, &context), c.order);
  }
}

TEST(DateAbleSortComparator, SortsOtherAttributesAscendingWithAbsentOnesStillLast) {
  const DateAbleSortContext context{.dateIndex = 1, .attributeCount = 2};
  const Value apple("apple");
  const Value berry("berry");
  struct Case {
    const char* what;
    const Value* a[2];
    const Value* b[2];
    int order;
  };
  const Case cases[] = {
      {"the first attribute decides", {&apple, &kOld}, {&berry, &kNew}, -1},
      {"the first attribute decides, turned", {&berry, &kNew}, {&apple, &kOld}, 1},
      {"equal: the date decides, newest first", {&apple, &kOld}, {&apple, &kNew}, 1},
      {"absent goes last when ascending", {nullptr, &kNew}, {&apple, &kOld}, 1},
      {"absent goes last when descending", {&apple, nullptr}, {&apple, &kOld}, 1},
      {"both equal", {&apple, &kOld}, {&apple, &kOld}, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(dateAbleSortComparatorFunction(c.a, c.b, &context), c.order);
  }
}

TEST(DateAbleSortComparator, FindsAllEqualWithoutAttributes) {
  const DateAbleSortContext context{.dateIndex = 0, .attributeCount = 0};
  const Value* a[] = {&kOld};
  const Value* b[] = {&kNew};
  EXPECT_EQ(dateAbleSortComparatorFunction(a, b, &context), 0);
}

TEST(DateAbleSortComparator, KeepsHitsWithoutDatesInOrderInAStableSortByLess) {
  struct Hit {
    std::string name;
    const Value* date;
  };
  std::vector<Hit> hits = {{"a", nullptr}, {"b", &kOld},   {"c", nullptr},
                           {"d", &kNew},   {"e", nullptr}, {"f", &kOld}};
  const DateAbleSortContext context{.dateIndex = 0, .attributeCount = 1};
  std::ranges::stable_sort(hits, [&](const Hit& a, const Hit& b) {
    return dateAbleSortComparatorFunction(&a.date, &b.date, &context) < 0;
  });
  std::string names;
  for (const Hit& hit : hits) names += hit.name;
  EXPECT_EQ(names, "dbface");
}

}  // namespace
}  // namespace vt
