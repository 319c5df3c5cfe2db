#include "metadata/query/TypedDate.h"

#include <gtest/gtest.h>

namespace vt::query {

TEST(TypedDate, NamesADayWeekMonthOrYear) {
  struct Case {
    std::string_view typed;
    std::string_view begin;
    std::string_view end;
  };
  const Case cases[] = {
      {"today", "$time.today", "$time.tomorrow"},
      {"Heute", "$time.today", "$time.tomorrow"},
      {"yesterday", "$time.yesterday", "$time.today"},
      {"last-week", "$time.last_week", "$time.this_week"},
      {"Last Week", "$time.last_week", "$time.this_week"},
      {"this_month", "$time.this_month", "$time.next_month"},
      {"nextyear", "$time.next_year", "$time.this_year(2)"},
      {"1d", "$time.today", "$time.tomorrow"},
      {"7d", "$time.today(-6)", "$time.tomorrow"},
      {"2024", "$time.iso(2024-01-01)", "$time.iso(2025-01-01)"},
      {"2024-12", "$time.iso(2024-12-01)", "$time.iso(2025-01-01)"},
      {"2024-02-29", "$time.iso(2024-02-29)", "$time.iso(2024-03-01)"},
      {"0001", "$time.iso(0001-01-01)", "$time.iso(0002-01-01)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.typed);
    const auto period = periodNamed(c.typed);
    ASSERT_TRUE(period);
    EXPECT_EQ(period->begin, c.begin);
    EXPECT_EQ(period->end, c.end);
  }
}

TEST(TypedDate, IsNothingElse) {
  for (const std::string_view typed :
       {"", "soon", "2023-02-29", "2024-13", "2024-00", "2024-1", "24-01-01", "20240101",
        "2024-01-01x", "-2024", "9999", "0000", "0d", "-1d", "d", "99999999d", "2024-+1"}) {
    SCOPED_TRACE(typed);
    EXPECT_FALSE(periodNamed(typed));
  }
}

}  // namespace vt::query
