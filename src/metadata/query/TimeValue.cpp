#include "metadata/query/TimeValue.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace vt::query {

namespace {

using Function = TimeValue::Function;

constexpr std::array<std::pair<std::string_view, Function>, 14> kFunctions = {{
    {"now", Function::kNow},
    {"today", Function::kToday},
    {"yesterday", Function::kYesterday},
    {"tomorrow", Function::kTomorrow},
    {"this_week", Function::kThisWeek},
    {"last_week", Function::kLastWeek},
    {"next_week", Function::kNextWeek},
    {"this_month", Function::kThisMonth},
    {"last_month", Function::kLastMonth},
    {"next_month", Function::kNextMonth},
    {"this_year", Function::kThisYear},
    {"last_year", Function::kLastYear},
    {"next_year", Function::kNextYear},
    {"iso", Function::kIso},
}};

/// Reads a text from the front; every take either succeeds or leaves it as it was.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }

  bool take(char c) {
    if (!rest_.starts_with(c)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  /// A number of exactly `digits` digits.
  std::optional<int> takeNumber(std::size_t digits) {
    if (rest_.size() < digits) return std::nullopt;
    int number = 0;
    for (const char c : rest_.substr(0, digits)) {
      if (c < '0' || c > '9') return std::nullopt;
      number = number * 10 + (c - '0');
    }
    rest_.remove_prefix(digits);
    return number;
  }

 private:
  std::string_view rest_;
};

/// The fraction after its point, as microseconds; what lies beyond them is cut.
std::optional<std::chrono::microseconds> takeFraction(Reader& reader) {
  int micros = 0;
  int scale = 100000;
  std::size_t digits = 0;
  while (const std::optional<int> digit = reader.takeNumber(1)) {
    micros += *digit * scale;
    scale /= 10;
    ++digits;
  }
  if (digits == 0) return std::nullopt;
  return std::chrono::microseconds{micros};
}

/// How far a zone is ahead of UTC: `Z`, `+hh:mm` or `+hhmm`.
std::optional<std::chrono::minutes> takeZone(Reader& reader) {
  if (reader.take('Z')) return std::chrono::minutes{0};
  const bool isAhead = reader.take('+');
  if (!isAhead && !reader.take('-')) return std::nullopt;
  const std::optional<int> hours = reader.takeNumber(2);
  reader.take(':');
  const std::optional<int> minutes = reader.takeNumber(2);
  if (!hours || !minutes || *hours > 23 || *minutes > 59) return std::nullopt;
  return std::chrono::minutes{(isAhead ? 1 : -1) * (*hours * 60 + *minutes)};
}

TimeSpan unitSpan(CalendarUnit unit, std::int64_t unitsLater, const EvaluationContext& context) {
  const Calendar& calendar = context.calendar;
  // One more than the distance at which the calendar stops anyway, so that adding 1 is safe.
  constexpr std::int64_t kFar = 1'000'000'000;
  const std::int64_t later = std::clamp(unitsLater, -kFar, kFar);
  return {calendar.startOfUnit(unit, context.now, later),
          calendar.startOfUnit(unit, context.now, later + 1), false};
}

Date secondsLater(Date date, std::int64_t seconds) {
  // 20,000 years: beyond every date of the language, far from what a Date can hold.
  constexpr std::int64_t kFar = 20'000LL * 366 * 86400;
  return date + std::chrono::seconds{std::clamp(seconds, -kFar, kFar)};
}

}  // namespace

std::optional<Function> timeFunctionNamed(std::string_view name) {
  for (const auto& [word, function] : kFunctions) {
    if (word == name) return function;
  }
  return std::nullopt;
}

std::string_view nameOfTimeFunction(Function function) {
  for (const auto& [word, known] : kFunctions) {
    if (known == function) return word;
  }
  return {};
}

bool takesCount(Function function) {
  switch (function) {
    case Function::kNow:
    case Function::kToday:
    case Function::kThisWeek:
    case Function::kThisMonth:
    case Function::kThisYear:
      return true;
    default:
      return false;
  }
}

std::optional<Date> parseIsoTime(std::string_view text, const Calendar& calendar) {
  Reader reader(text);
  const std::optional<int> year = reader.takeNumber(4);
  if (!year || !reader.take('-')) return std::nullopt;
  const std::optional<int> month = reader.takeNumber(2);
  if (!month || !reader.take('-')) return std::nullopt;
  const std::optional<int> day = reader.takeNumber(2);
  if (!day) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year{*year},
                                         std::chrono::month{static_cast<unsigned>(*month)},
                                         std::chrono::day{static_cast<unsigned>(*day)}};
  if (!date.ok()) return std::nullopt;

  WallTime time{.year = *year, .month = *month, .day = *day};
  if (reader.atEnd()) return calendar.instantOf(time);

  if (!reader.take('T') && !reader.take(' ')) return std::nullopt;
  const std::optional<int> hour = reader.takeNumber(2);
  if (!hour || !reader.take(':')) return std::nullopt;
  const std::optional<int> minute = reader.takeNumber(2);
  if (!minute) return std::nullopt;
  std::optional<int> second = 0;
  std::optional<std::chrono::microseconds> fraction = std::chrono::microseconds{0};
  if (reader.take(':')) {
    second = reader.takeNumber(2);
    if (second && reader.take('.')) fraction = takeFraction(reader);
  }
  if (!second || !fraction || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  time.hour = *hour;
  time.minute = *minute;
  time.second = *second;
  if (reader.atEnd()) return calendar.instantOf(time) + *fraction;

  const std::optional<std::chrono::minutes> zone = takeZone(reader);
  if (!zone || !reader.atEnd()) return std::nullopt;
  return Date{std::chrono::sys_days{date}} + std::chrono::hours{*hour} +
         std::chrono::minutes{*minute} + std::chrono::seconds{*second} + *fraction - *zone;
}

TimeSpan resolveTime(const TimeValue& value, const EvaluationContext& context) {
  const std::int64_t count = value.count.value_or(0);
  const auto instant = [](Date date) { return TimeSpan{date, date, true}; };
  switch (value.function) {
    case Function::kNow:
      return instant(secondsLater(context.now, count));
    case Function::kToday:
      return unitSpan(CalendarUnit::kDay, count, context);
    case Function::kYesterday:
      return unitSpan(CalendarUnit::kDay, -1, context);
    case Function::kTomorrow:
      return unitSpan(CalendarUnit::kDay, 1, context);
    case Function::kThisWeek:
      return unitSpan(CalendarUnit::kWeek, count, context);
    case Function::kLastWeek:
      return unitSpan(CalendarUnit::kWeek, -1, context);
    case Function::kNextWeek:
      return unitSpan(CalendarUnit::kWeek, 1, context);
    case Function::kThisMonth:
      return unitSpan(CalendarUnit::kMonth, count, context);
    case Function::kLastMonth:
      return unitSpan(CalendarUnit::kMonth, -1, context);
    case Function::kNextMonth:
      return unitSpan(CalendarUnit::kMonth, 1, context);
    case Function::kThisYear:
      return unitSpan(CalendarUnit::kYear, count, context);
    case Function::kLastYear:
      return unitSpan(CalendarUnit::kYear, -1, context);
    case Function::kNextYear:
      return unitSpan(CalendarUnit::kYear, 1, context);
    case Function::kIso:
      return instant(parseIsoTime(value.iso, context.calendar).value_or(context.now));
  }
  return instant(context.now);
}

}  // namespace vt::query
