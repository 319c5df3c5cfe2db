#include "metadata/query/TypedDate.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <chrono>

namespace vt::query {
namespace {

// Joined words, so that no blank is needed: "lastweek" for "last-week" and "last week".
struct NamedPeriod {
  std::string_view word;
  const char* begin;
  const char* end;
};

constexpr std::array kNamedPeriods = std::to_array<NamedPeriod>({
    {"today", "$time.today", "$time.tomorrow"},
    {"heute", "$time.today", "$time.tomorrow"},
    {"yesterday", "$time.yesterday", "$time.today"},
    {"gestern", "$time.yesterday", "$time.today"},
    {"tomorrow", "$time.tomorrow", "$time.today(2)"},
    {"morgen", "$time.tomorrow", "$time.today(2)"},
    {"week", "$time.this_week", "$time.next_week"},
    {"thisweek", "$time.this_week", "$time.next_week"},
    {"woche", "$time.this_week", "$time.next_week"},
    {"diesewoche", "$time.this_week", "$time.next_week"},
    {"lastweek", "$time.last_week", "$time.this_week"},
    {"letztewoche", "$time.last_week", "$time.this_week"},
    {"nextweek", "$time.next_week", "$time.this_week(2)"},
    {"month", "$time.this_month", "$time.next_month"},
    {"thismonth", "$time.this_month", "$time.next_month"},
    {"monat", "$time.this_month", "$time.next_month"},
    {"diesermonat", "$time.this_month", "$time.next_month"},
    {"lastmonth", "$time.last_month", "$time.this_month"},
    {"letztermonat", "$time.last_month", "$time.this_month"},
    {"nextmonth", "$time.next_month", "$time.this_month(2)"},
    {"year", "$time.this_year", "$time.next_year"},
    {"thisyear", "$time.this_year", "$time.next_year"},
    {"jahr", "$time.this_year", "$time.next_year"},
    {"diesesjahr", "$time.this_year", "$time.next_year"},
    {"lastyear", "$time.last_year", "$time.this_year"},
    {"letztesjahr", "$time.last_year", "$time.this_year"},
    {"nextyear", "$time.next_year", "$time.this_year(2)"},
});

std::string joinedWord(std::string_view typed) {
  std::string word;
  for (const char c : typed) {
    if (c == ' ' || c == '-' || c == '_') continue;
    word += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return word;
}

/// Exactly `digits` digits off the front.
std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) return std::nullopt;
  int number = 0;
  const char* const end = text.data() + digits;
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || text.front() == '-') return std::nullopt;
  text.remove_prefix(digits);
  return number;
}

std::string instant(std::chrono::year_month_day day) {
  return fmt::format("$time.iso({:04}-{:02}-{:02})", static_cast<int>(day.year()),
                     static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
}

// "2024", "2024-03", "2024-03-31". The year after the last one that four digits hold has no name.
std::optional<TypedPeriod> calendarPeriod(std::string_view text) {
  using namespace std::chrono;
  const std::optional<int> y = takeNumber(text, 4);
  if (!y || *y < 1 || *y > 9998) return std::nullopt;
  const year theYear{*y};
  if (text.empty())
    return TypedPeriod{instant(theYear / 1 / 1), instant((theYear + years(1)) / 1 / 1)};
  if (!text.starts_with('-')) return std::nullopt;
  text.remove_prefix(1);
  const std::optional<int> m = takeNumber(text, 2);
  if (!m || *m < 1 || *m > 12) return std::nullopt;
  const year_month theMonth = theYear / month(static_cast<unsigned>(*m));
  if (text.empty()) return TypedPeriod{instant(theMonth / 1), instant((theMonth + months(1)) / 1)};
  if (!text.starts_with('-')) return std::nullopt;
  text.remove_prefix(1);
  const std::optional<int> d = takeNumber(text, 2);
  if (!d || !text.empty()) return std::nullopt;
  const year_month_day day = theMonth / *d;
  if (!day.ok()) return std::nullopt;
  return TypedPeriod{instant(day), instant(sys_days(day) + days(1))};
}

// "7d": today and the six days before it.
std::optional<TypedPeriod> lastDays(std::string_view text) {
  if (!text.ends_with('d')) return std::nullopt;
  text.remove_suffix(1);
  unsigned count = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
  if (count < 1 || count > 100'000) return std::nullopt;
  if (count == 1) return TypedPeriod{"$time.today", "$time.tomorrow"};
  return TypedPeriod{fmt::format("$time.today(-{})", count - 1), "$time.tomorrow"};
}

}  // namespace

std::optional<TypedPeriod> periodNamed(std::string_view typed) {
  const std::string word = joinedWord(typed);
  for (const NamedPeriod& period : kNamedPeriods) {
    if (period.word == word) return TypedPeriod{period.begin, period.end};
  }
  if (auto days = lastDays(typed)) return days;
  return calendarPeriod(typed);
}

}  // namespace vt::query
