#include "metadata/query/Calendar.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <optional>

namespace vt::query {

namespace {

constexpr std::time_t kSecondsPerDay = 86400;

// Wide enough to cross the years 0 to 9999, small enough for the fields of a broken-down time.
constexpr std::int64_t kMostDays = 3'700'000;

Date dateOf(std::time_t seconds) { return Date{std::chrono::seconds{seconds}}; }

std::time_t secondsOf(Date date) {
  return std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
}

std::tm brokenDown(std::time_t time) {
  std::tm fields{};
  localtime_r(&time, &fields);
  return fields;
}

bool showsSameTime(const std::tm& a, const std::tm& b) {
  return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday &&
         a.tm_hour == b.tm_hour && a.tm_min == b.tm_min && a.tm_sec == b.tm_sec;
}

bool isBefore(const std::tm& a, const std::tm& b) {
  const auto fields = [](const std::tm& t) {
    return std::array<int, 6>{t.tm_year, t.tm_mon, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec};
  };
  return fields(a) < fields(b);
}

/// The fields put in range as the calendar has it: day 0 is the last of the month before.
std::tm normalized(std::tm fields) {
  fields.tm_isdst = 0;
  timegm(&fields);  // knows no zone, so no hour is moved
  return fields;
}

/// The first instant at which clocks show `wanted`, which is in range; if none do, the first at
/// which they show something later.
std::time_t firstInstantShowing(const std::tm& wanted) {
  std::optional<std::time_t> first;
  for (const int isDaylightSaving : {1, 0, -1}) {
    std::tm fields = wanted;
    fields.tm_isdst = isDaylightSaving;
    const std::time_t candidate = mktime(&fields);
    if (showsSameTime(brokenDown(candidate), wanted) && (!first || candidate < *first)) {
      first = candidate;
    }
  }
  if (first) return *first;

  // Clocks skip it. Zones lie within a day of UTC, and no zone ever skipped more than a day.
  std::tm utc = wanted;
  const std::time_t around = timegm(&utc);
  std::time_t before = around - 2 * kSecondsPerDay;
  std::time_t after = around + 2 * kSecondsPerDay;
  while (after - before > 1) {
    const std::time_t middle = before + (after - before) / 2;
    (isBefore(brokenDown(middle), wanted) ? before : after) = middle;
  }
  return after;
}

/// The nearest time in the years 0 to 9999, which are those of the language.
std::tm clampedToYears(std::tm fields) {
  constexpr int kFirstYear = 0 - 1900;
  constexpr int kLastYear = 9999 - 1900;
  if (fields.tm_year >= kFirstYear && fields.tm_year <= kLastYear) return fields;
  const bool isTooLate = fields.tm_year > kLastYear;
  fields.tm_year = isTooLate ? kLastYear : kFirstYear;
  fields.tm_mon = isTooLate ? 11 : 0;
  fields.tm_mday = isTooLate ? 31 : 1;
  return fields;
}

}  // namespace

Date Calendar::startOfUnit(CalendarUnit unit, Date instant, std::int64_t unitsLater) const {
  std::tm fields = brokenDown(secondsOf(instant));
  fields.tm_hour = fields.tm_min = fields.tm_sec = 0;
  const auto later = static_cast<int>(std::clamp(unitsLater, -kMostDays, kMostDays));
  switch (unit) {
    case CalendarUnit::kDay:
      fields.tm_mday += later;
      break;
    case CalendarUnit::kWeek: {
      const int daysIntoWeek = (fields.tm_wday - firstWeekday_ + 7) % 7;
      fields.tm_mday += 7 * later - daysIntoWeek;
      break;
    }
    case CalendarUnit::kMonth:
      fields.tm_mday = 1;
      fields.tm_mon += later;
      break;
    case CalendarUnit::kYear:
      fields.tm_mday = 1;
      fields.tm_mon = 0;
      fields.tm_year += later;
      break;
  }
  return dateOf(firstInstantShowing(clampedToYears(normalized(fields))));
}

Date Calendar::instantOf(const WallTime& time) const {
  std::tm fields{};
  fields.tm_year = time.year - 1900;
  fields.tm_mon = time.month - 1;
  fields.tm_mday = time.day;
  fields.tm_hour = time.hour;
  fields.tm_min = time.minute;
  fields.tm_sec = time.second;
  return dateOf(firstInstantShowing(fields));
}

}  // namespace vt::query
