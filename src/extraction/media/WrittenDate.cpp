#include "extraction/media/WrittenDate.h"

#include <chrono>
#include <cstdint>

#include "metadata/query/Calendar.h"

namespace vt {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Cuts a number of exactly `digits` digits from the front.
std::optional<int> takeNumber(std::string_view& rest, std::size_t digits) {
  if (rest.size() < digits) return std::nullopt;
  int number = 0;
  for (const char c : rest.substr(0, digits)) {
    if (!isDigit(c)) return std::nullopt;
    number = number * 10 + (c - '0');
  }
  rest.remove_prefix(digits);
  return number;
}

void skipOneOf(std::string_view& rest, std::string_view characters) {
  if (!rest.empty() && characters.find(rest.front()) != std::string_view::npos) {
    rest.remove_prefix(1);
  }
}

/// Cuts ".5" from the front.
std::chrono::microseconds takeFraction(std::string_view& rest) {
  std::chrono::microseconds fraction{0};
  if (rest.size() < 2 || (rest[0] != '.' && rest[0] != ',') || !isDigit(rest[1])) return fraction;
  rest.remove_prefix(1);
  for (std::int64_t unit = 100'000; !rest.empty() && isDigit(rest.front()); unit /= 10) {
    fraction += std::chrono::microseconds{unit * (rest.front() - '0')};
    rest.remove_prefix(1);
  }
  return fraction;
}

/// What must be subtracted to get universal time; nothing when no zone is written.
std::optional<std::chrono::minutes> zoneIn(std::string_view rest) {
  while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
  if (rest.starts_with('Z')) return std::chrono::minutes{0};
  if (!rest.starts_with('+') && !rest.starts_with('-')) return std::nullopt;
  const int sign = rest.front() == '-' ? -1 : 1;
  rest.remove_prefix(1);
  const std::optional<int> hours = takeNumber(rest, 2);
  skipOneOf(rest, ":");
  const std::optional<int> minutes = takeNumber(rest, 2);
  if (!hours || *hours > 23 || minutes.value_or(0) > 59) return std::nullopt;
  return std::chrono::minutes{sign * (*hours * 60 + minutes.value_or(0))};
}

}  // namespace

std::optional<Date> dateOfWritten(std::string_view written) {
  using std::chrono::day, std::chrono::month, std::chrono::year;
  query::WallTime time;
  const std::optional<int> years = takeNumber(written, 4);
  skipOneOf(written, ":-/.");
  const std::optional<int> months = takeNumber(written, 2);
  skipOneOf(written, ":-/.");
  const std::optional<int> days = takeNumber(written, 2);
  if (!years || *years == 0 || !months || !days) return std::nullopt;
  const std::chrono::year_month_day date{year{*years}, month{static_cast<unsigned>(*months)},
                                         day{static_cast<unsigned>(*days)}};
  if (!date.ok()) return std::nullopt;
  time.year = *years;
  time.month = *months;
  time.day = *days;

  std::chrono::microseconds fraction{0};
  skipOneOf(written, "T :");
  if (const std::optional<int> hours = takeNumber(written, 2)) {
    skipOneOf(written, ":");
    const std::optional<int> minutes = takeNumber(written, 2);
    skipOneOf(written, ":");
    const std::optional<int> seconds = takeNumber(written, 2);
    fraction = takeFraction(written);
    time.hour = *hours;
    time.minute = minutes.value_or(0);
    time.second = seconds.value_or(0);
  }
  if (time.hour > 23 || time.minute > 59 || time.second > 60) return std::nullopt;
  if (const std::optional<std::chrono::minutes> zone = zoneIn(written)) {
    return Date{std::chrono::sys_days{date}} + std::chrono::hours{time.hour} +
           std::chrono::minutes{time.minute} + std::chrono::seconds{time.second} + fraction - *zone;
  }
  if (time.second == 60) time.second = 59;
  return query::Calendar().instantOf(time) + fraction;
}

std::optional<int> yearOfWritten(std::string_view written) {
  const std::optional<int> year = takeNumber(written, 4);
  return year && *year > 0 ? year : std::nullopt;
}

}  // namespace vt
