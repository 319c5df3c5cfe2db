#include "metadata/query/Calendar.h"

#include <gtest/gtest.h>

#include "metadata/query/QueryTesting.h"

namespace vt::query {

namespace {

/// An instant written in UTC.
Date utc(std::string_view iso) { return parseIsoTime(std::string(iso) + "Z", Calendar()).value(); }

}  // namespace

TEST(Calendar, FindsTheStartsOfUnits) {
  using enum CalendarUnit;
  struct Case {
    const char* zone;
    CalendarUnit unit;
    int later;
    const char* instant;
    const char* start;
  };
  const Case cases[] = {
      {"UTC", kDay, 0, "2024-02-29T12:30", "2024-02-29T00:00"},
      {"UTC", kDay, 1, "2024-02-29T12:30", "2024-03-01T00:00"},
      {"UTC", kDay, 0, "2024-02-29T00:00", "2024-02-29T00:00"},
      {"UTC", kDay, 0, "1969-12-31T23:59", "1969-12-31T00:00"},
      {"UTC", kWeek, 0, "2024-02-29T12:30", "2024-02-26T00:00"},
      {"UTC", kWeek, 0, "2024-02-26T00:00", "2024-02-26T00:00"},
      {"UTC", kWeek, -1, "2024-03-03T23:59", "2024-02-19T00:00"},
      {"UTC", kMonth, 0, "2024-02-29T12:30", "2024-02-01T00:00"},
      {"UTC", kMonth, -1, "2024-03-31T12:30", "2024-02-01T00:00"},
      {"UTC", kMonth, -14, "2024-02-29T12:30", "2022-12-01T00:00"},
      {"UTC", kYear, 0, "2024-02-29T12:30", "2024-01-01T00:00"},
      {"UTC", kYear, 1, "2024-02-29T12:30", "2025-01-01T00:00"},
      // Clocks go forward on 31 March and back on 27 October.
      {"Europe/Berlin", kDay, 0, "2024-03-31T12:00", "2024-03-30T23:00"},
      {"Europe/Berlin", kDay, 1, "2024-03-31T12:00", "2024-03-31T22:00"},
      {"Europe/Berlin", kDay, 7, "2024-03-28T12:00", "2024-04-03T22:00"},
      {"Europe/Berlin", kDay, 0, "2024-10-27T12:00", "2024-10-26T22:00"},
      {"Europe/Berlin", kDay, 1, "2024-10-27T12:00", "2024-10-27T23:00"},
      {"Europe/Berlin", kMonth, 0, "2024-02-29T23:30", "2024-02-29T23:00"},
      {"Europe/Berlin", kYear, 0, "2024-07-01T12:00", "2023-12-31T23:00"},
      {"America/New_York", kDay, 0, "2024-03-10T12:00", "2024-03-10T05:00"},
      {"America/New_York", kDay, 1, "2024-03-10T12:00", "2024-03-11T04:00"},
      {"America/New_York", kWeek, 0, "2024-11-03T12:00", "2024-10-28T04:00"},
      {"America/New_York", kWeek, 1, "2024-11-03T12:00", "2024-11-04T05:00"},
      {"Asia/Kathmandu", kDay, 0, "2024-02-29T18:14", "2024-02-28T18:15"},
      {"Asia/Kathmandu", kDay, 0, "2024-02-29T18:15", "2024-02-29T18:15"},
      // On 4 November 2018 clocks went from 24:00 to 01:00: the day has no midnight.
      {"America/Sao_Paulo", kDay, 0, "2018-11-04T12:00", "2018-11-04T03:00"},
      {"America/Sao_Paulo", kDay, 1, "2018-11-03T12:00", "2018-11-04T03:00"},
      {"America/Sao_Paulo", kDay, 1, "2018-11-04T12:00", "2018-11-05T02:00"},
      // On 18 February clocks went from 24:00 back to 23:00.
      {"America/Sao_Paulo", kDay, 0, "2018-02-18T12:00", "2018-02-18T03:00"},
      {"America/Sao_Paulo", kDay, 0, "2018-02-18T02:30", "2018-02-17T02:00"},
      // In Havana clocks go from 01:00 back to midnight, which comes twice.
      {"America/Havana", kDay, 0, "2023-11-05T12:00", "2023-11-05T04:00"},
      // Samoa left out 30 December 2011.
      {"Pacific/Apia", kDay, 1, "2011-12-29T12:00", "2011-12-30T10:00"},
      {"Pacific/Apia", kDay, 2, "2011-12-29T12:00", "2011-12-30T10:00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.zone) + " " + c.instant + " + " + std::to_string(c.later));
    const TimeZone zone(c.zone);
    EXPECT_EQ(Calendar().startOfUnit(c.unit, utc(c.instant), c.later), utc(c.start));
  }
}

TEST(Calendar, BeginsWeeksOnTheDayItIsTold) {
  const TimeZone zone("UTC");
  const Date thursday = utc("2024-02-29T12:30");
  EXPECT_EQ(Calendar(7).startOfUnit(CalendarUnit::kWeek, thursday), utc("2024-02-25T00:00"));
  EXPECT_EQ(Calendar(4).startOfUnit(CalendarUnit::kWeek, thursday), utc("2024-02-29T00:00"));
  EXPECT_EQ(Calendar(5).startOfUnit(CalendarUnit::kWeek, thursday), utc("2024-02-23T00:00"));
}

TEST(Calendar, StopsAtTheEndsOfItsYears) {
  const TimeZone zone("UTC");
  const Date now = utc("2024-02-29T12:30");
  for (const CalendarUnit unit :
       {CalendarUnit::kDay, CalendarUnit::kWeek, CalendarUnit::kMonth, CalendarUnit::kYear}) {
    EXPECT_EQ(Calendar().startOfUnit(unit, now, INT64_MAX), utc("9999-12-31T00:00"));
    EXPECT_EQ(Calendar().startOfUnit(unit, now, INT64_MIN), utc("0000-01-01T00:00"));
  }
}

TEST(Calendar, NeverGoesBackFromDayToDay) {
  for (const char* name : {"Europe/Berlin", "America/New_York", "Asia/Kathmandu",
                           "America/Sao_Paulo", "America/Havana", "America/St_Johns",
                           "Pacific/Apia", "Africa/Cairo", "Australia/Lord_Howe"}) {
    SCOPED_TRACE(name);
    const TimeZone zone(name);
    const Date start = utc("2005-01-01T12:00");
    Date before = Calendar().startOfUnit(CalendarUnit::kDay, start, -1);
    for (int day = 0; day < 366 * 15; ++day) {
      const Date at = Calendar().startOfUnit(CalendarUnit::kDay, start, day);
      ASSERT_GE(at, before) << day;
      ASSERT_LE(at - before, std::chrono::hours(49)) << day;
      before = at;
    }
  }
}

TEST(Calendar, ReadsSkippedAndRepeatedWallTimes) {
  const TimeZone zone("Europe/Berlin");
  EXPECT_EQ(Calendar().instantOf({2024, 3, 31, 2, 30, 0}), utc("2024-03-31T01:00"));
  EXPECT_EQ(Calendar().instantOf({2024, 10, 27, 2, 30, 0}), utc("2024-10-27T00:30"));
  EXPECT_EQ(Calendar().instantOf({2024, 7, 1, 12, 0, 5}), utc("2024-07-01T10:00:05"));
}

}  // namespace vt::query
