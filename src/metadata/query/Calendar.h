#pragma once

#include <cstdint>

#include "foundation/Date.h"

namespace vt::query {

enum class CalendarUnit { kDay, kWeek, kMonth, kYear };

/// A date and time of day as a wall clock shows it.
struct WallTime {
  int year = 1970;
  int month = 1;  ///< 1 to 12
  int day = 1;    ///< 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;
};

/// Calendar arithmetic in the time zone of the process (TZ).
class Calendar {
 public:
  /// `firstWeekday`: 1 is Monday, 7 is Sunday.
  explicit Calendar(int firstWeekday = 1) : firstWeekday_(firstWeekday) {}

  /// The first instant of the unit that lies `unitsLater` units after the one that holds `instant`.
  ///
  /// Counted by the calendar, so a day may last 23 or 25 hours. On a day without a midnight it is
  /// the first moment that the day has; where midnight comes twice, the first. Distances beyond the
  /// years 0 to 9999 stop at their ends.
  Date startOfUnit(CalendarUnit unit, Date instant, std::int64_t unitsLater = 0) const;

  /// The instant at which clocks show `time`. Where they show it twice the first, where they skip
  /// it the moment of the skip. The fields must be in range.
  Date instantOf(const WallTime& time) const;

 private:
  int firstWeekday_;
};

}  // namespace vt::query
