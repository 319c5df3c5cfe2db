#include "metadata/query/TimeValue.h"

#include <gtest/gtest.h>

#include "metadata/query/QueryTesting.h"

namespace vt::query {

namespace {

std::optional<std::int64_t> microseconds(std::string_view iso) {
  const std::optional<Date> date = parseIsoTime(iso, Calendar());
  if (!date) return std::nullopt;
  return date->time_since_epoch().count();
}

}  // namespace

TEST(IsoTime, IsReadInItsForms) {
  const TimeZone zone("Asia/Kathmandu");             // 5:45 ahead of UTC
  constexpr std::int64_t kNoon = 1709208000'000000;  // 2024-02-29T12:00:00Z
  constexpr std::int64_t kMinute = 60'000000;
  struct Case {
    std::string_view text;
    std::int64_t microseconds;
  };
  const Case cases[] = {
      {"2024-02-29T12:00:00Z", kNoon},
      {"2024-02-29 12:00Z", kNoon},
      {"2024-02-29T12:00:00.25Z", kNoon + 250000},
      {"2024-02-29T12:00:00.1234569Z", kNoon + 123456},
      {"2024-02-29T12:00:00+01:30", kNoon - 90 * kMinute},
      {"2024-02-29T12:00:00-0130", kNoon + 90 * kMinute},
      {"2024-02-29T12:00:00", kNoon - 345 * kMinute},
      {"2024-02-29", kNoon - (720 + 345) * kMinute},
      {"1970-01-01T00:00:00Z", 0},
      {"0000-01-01T00:00:00Z", -62167219200'000000},
      {"9999-12-31T23:59:59Z", 253402300799'000000},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(microseconds(c.text), c.microseconds);
  }
}

TEST(IsoTime, IsRefusedWhenMalformed) {
  for (const char* text : {"",
                           "2024",
                           "2024-02",
                           "2024-2-29",
                           "24-02-29",
                           "2024-02-30",
                           "2023-02-29",
                           "2024-00-10",
                           "2024-13-01",
                           "2024-01-00",
                           "2024-01-32",
                           "2024-01-01T",
                           "2024-01-01T12",
                           "2024-01-01T12:",
                           "2024-01-01T24:00",
                           "2024-01-01T12:60",
                           "2024-01-01T12:00:60",
                           "2024-01-01T12:00:",
                           "2024-01-01T12:00:00.",
                           "2024-01-01T12:00:00.Z",
                           "2024-01-01T12:00:00 Z",
                           "2024-01-01T12:00:00Zjunk",
                           "2024-01-01T12:00:00+1",
                           "2024-01-01T12:00:00+24:00",
                           "2024-01-01T12:00:00+01:60",
                           "2024-01-01t12:00",
                           "2024-01-01Z",
                           "-2024-01-01",
                           "2024-01-01T12:00z",
                           " 2024-01-01"}) {
    EXPECT_FALSE(microseconds(text)) << text;
  }
}

TEST(TimeValue, HasANameForEachFunction) {
  for (const char* name :
       {"now", "today", "yesterday", "tomorrow", "this_week", "last_week", "next_week",
        "this_month", "last_month", "next_month", "this_year", "last_year", "next_year", "iso"}) {
    const auto function = timeFunctionNamed(name);
    ASSERT_TRUE(function) << name;
    EXPECT_EQ(nameOfTimeFunction(*function), name);
  }
  EXPECT_FALSE(timeFunctionNamed("fortnight"));
  EXPECT_FALSE(timeFunctionNamed("Today"));
}

TEST(TimeValue, SpansTheUnitThatItNames) {
  const TimeZone zone("UTC");
  struct Case {
    TimeValue value;
    std::string_view start;
    std::string_view end;
    bool isInstant;
  };
  using enum TimeValue::Function;
  const Case cases[] = {
      {{kNow, std::nullopt, false, ""}, "2024-02-29T12:30:00Z", "2024-02-29T12:30:00Z", true},
      {{kNow, -60, false, ""}, "2024-02-29T12:29:00Z", "2024-02-29T12:29:00Z", true},
      {{kToday, 1, true, ""}, "2024-03-01", "2024-03-02", false},
      {{kYesterday, std::nullopt, false, ""}, "2024-02-28", "2024-02-29", false},
      {{kTomorrow, std::nullopt, false, ""}, "2024-03-01", "2024-03-02", false},
      {{kThisWeek, -2, false, ""}, "2024-02-12", "2024-02-19", false},
      {{kLastWeek, std::nullopt, false, ""}, "2024-02-19", "2024-02-26", false},
      {{kNextWeek, std::nullopt, false, ""}, "2024-03-04", "2024-03-11", false},
      {{kThisMonth, 0, false, ""}, "2024-02-01", "2024-03-01", false},
      {{kLastMonth, std::nullopt, false, ""}, "2024-01-01", "2024-02-01", false},
      {{kNextMonth, std::nullopt, false, ""}, "2024-03-01", "2024-04-01", false},
      {{kThisYear, -1, false, ""}, "2023-01-01", "2024-01-01", false},
      {{kLastYear, std::nullopt, false, ""}, "2023-01-01", "2024-01-01", false},
      {{kNextYear, std::nullopt, false, ""}, "2025-01-01", "2026-01-01", false},
      {{kIso, std::nullopt, false, "2024-02-01"}, "2024-02-01", "2024-02-01", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(nameOfTimeFunction(c.value.function));
    const TimeSpan span = resolveTime(c.value, leapDayNoon());
    EXPECT_EQ(span.start, *parseIsoTime(c.start, Calendar()));
    EXPECT_EQ(span.end, *parseIsoTime(c.end, Calendar()));
    EXPECT_EQ(span.isInstant, c.isInstant);
  }
}

TEST(TimeValue, BearsCountsOfAnySize) {
  const TimeZone zone("UTC");
  using enum TimeValue::Function;
  for (const auto function : {kNow, kToday, kThisWeek, kThisMonth, kThisYear}) {
    SCOPED_TRACE(nameOfTimeFunction(function));
    EXPECT_GE(resolveTime({function, INT64_MAX, false, ""}, leapDayNoon()).start,
              *parseIsoTime("9999-12-31", Calendar()));
    EXPECT_LE(resolveTime({function, INT64_MIN, false, ""}, leapDayNoon()).start,
              *parseIsoTime("0000-01-01", Calendar()));
  }
}

}  // namespace vt::query
