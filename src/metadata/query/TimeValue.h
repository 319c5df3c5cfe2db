#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Date.h"
#include "metadata/query/Calendar.h"

namespace vt::query {

/// What a query means by now and by its days and weeks.
struct EvaluationContext {
  Date now;  ///< fixed once for the whole query
  Calendar calendar;
};

/// A `$time` value as it was written, not yet tied to a clock.
struct TimeValue {
  enum class Function {
    kNow,
    kToday,
    kYesterday,
    kTomorrow,
    kThisWeek,
    kLastWeek,
    kNextWeek,
    kThisMonth,
    kLastMonth,
    kNextMonth,
    kThisYear,
    kLastYear,
    kNextYear,
    kIso,
  };

  Function function = Function::kNow;
  std::optional<std::int64_t> count;  ///< units later; seconds for kNow
  bool hasUnitLetter = false;         ///< `-7d`
  std::string iso;                    ///< the text in the parentheses of kIso

  friend bool operator==(const TimeValue&, const TimeValue&) = default;
};

/// The function of that name ("today", "this_week", "iso"); none when there is none.
std::optional<TimeValue::Function> timeFunctionNamed(std::string_view name);
std::string_view nameOfTimeFunction(TimeValue::Function function);
/// Whether a number may stand in its parentheses.
bool takesCount(TimeValue::Function function);

/// A span of time with its end left out. An instant has `isInstant` and ends where it starts.
struct TimeSpan {
  Date start;
  Date end;
  bool isInstant = true;
};

/// `YYYY-MM-DD`, or that with a blank or `T` and `hh:mm`, `hh:mm:ss` or `hh:mm:ss.f`, then a zone
/// `Z`, `+hh:mm`, `+hhmm` or none, which is the zone of the process. None when the text is anything
/// else or names a day or time that does not exist. Fractions are cut to the microsecond.
std::optional<Date> parseIsoTime(std::string_view text, const Calendar& calendar);

/// The day, week, month or year that the value names, or its instant. The value must be one that
/// the parser let through.
TimeSpan resolveTime(const TimeValue& value, const EvaluationContext& context);

}  // namespace vt::query
