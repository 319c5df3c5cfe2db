#include "extraction/IsoDate.h"

#include <charconv>
#include <chrono>

namespace vt {
namespace {

/// Takes exactly `digits` digits from the front of `text`.
std::optional<int> number(std::string_view& text, std::size_t digits) {
  int value = 0;
  if (text.size() < digits) return std::nullopt;
  const char* const end = text.data() + digits;
  if (text.front() == '-' || std::from_chars(text.data(), end, value).ptr != end) {
    return std::nullopt;
  }
  text.remove_prefix(digits);
  return value;
}

bool take(std::string_view& text, char what) {
  if (!text.starts_with(what)) return false;
  text.remove_prefix(1);
  return true;
}

/// What is to be taken away for UTC; nothing when it is not written as an offset.
std::optional<std::chrono::minutes> offset(std::string_view text) {
  if (text.empty() || text == "Z" || text == "z") return std::chrono::minutes{0};
  const bool isWest = text.front() == '-';
  if (!isWest && text.front() != '+') return std::nullopt;
  text.remove_prefix(1);
  const std::optional<int> hours = number(text, 2);
  take(text, ':');
  const std::optional<int> minutes = text.empty() ? 0 : number(text, 2);
  if (!hours || !minutes || !text.empty() || *hours > 23 || *minutes > 59) return std::nullopt;
  const std::chrono::minutes east{*hours * 60 + *minutes};
  return isWest ? -east : east;
}

}  // namespace

std::optional<Date> dateOf(int year, int month, int day, int hour, int minute, int second) {
  const std::chrono::year_month_day date{std::chrono::year{year},
                                         std::chrono::month{static_cast<unsigned>(month)},
                                         std::chrono::day{static_cast<unsigned>(day)}};
  // A second may be the 61st.
  if (!date.ok() || hour > 23 || minute > 59 || second > 60 || hour < 0 || minute < 0 ||
      second < 0 || year < 1 || year > 9999) {
    return std::nullopt;
  }
  return Date{std::chrono::sys_days{date} + std::chrono::hours{hour} +
              std::chrono::minutes{minute} + std::chrono::seconds{second}};
}

std::optional<Date> dateInIsoText(std::string_view text) {
  while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ') text.remove_prefix(1);
  while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
  const std::optional<int> year = number(text, 4);
  if (!year) return std::nullopt;
  std::optional<int> month = 1;
  std::optional<int> day = 1;
  if (take(text, '-')) month = number(text, 2);
  if (month && take(text, '-')) day = number(text, 2);
  if (!month || !day) return std::nullopt;
  std::optional<int> hour = 0;
  std::optional<int> minute = 0;
  std::optional<int> second = 0;
  if (take(text, 'T') || take(text, ' ')) {
    hour = number(text, 2);
    if (!hour || !take(text, ':')) return std::nullopt;
    minute = number(text, 2);
    if (minute && take(text, ':')) second = number(text, 2);
    if (!minute || !second) return std::nullopt;
    if (take(text, '.')) {
      // To the second is enough.
      while (!text.empty() && text.front() >= '0' && text.front() <= '9') text.remove_prefix(1);
    }
  }
  const std::optional<Date> local = dateOf(*year, *month, *day, *hour, *minute, *second);
  const std::optional<std::chrono::minutes> east = offset(text);
  if (!local || !east) return std::nullopt;
  return *local - *east;
}

}  // namespace vt
