#include "foundation/PropertyListScalars.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vt {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t start = text.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

template <class Number, class... Format>
std::optional<Number> wholeNumber(std::string_view text, Format... format) {
  Number number{};
  const char* const start = text.data();
  const char* const end = start + text.size();
  const auto [stop, error] = std::from_chars(start, end, number, format...);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The text with ASCII letters made small.
std::string lowercase(std::string_view text) {
  std::string small(text);
  for (char& c : small) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return small;
}

}  // namespace

std::optional<Value> parsePropertyListInteger(std::string_view text) {
  text = trimmed(text);
  std::optional<std::uint64_t> magnitude;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    magnitude = wholeNumber<std::uint64_t>(text.substr(2), 16);
  } else if (text.starts_with('-')) {
    const std::optional<std::int64_t> number = wholeNumber<std::int64_t>(text);
    return number ? std::optional<Value>(*number) : std::nullopt;
  } else {
    if (text.starts_with('+')) text.remove_prefix(1);
    magnitude = wholeNumber<std::uint64_t>(text);
  }
  if (!magnitude) return std::nullopt;
  constexpr auto kLargestSigned = std::uint64_t{std::numeric_limits<std::int64_t>::max()};
  if (*magnitude <= kLargestSigned) return Value(static_cast<std::int64_t>(*magnitude));
  return Value(*magnitude);
}

std::optional<double> parsePropertyListReal(std::string_view text) {
  text = trimmed(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  std::optional<double> magnitude;
  if (isDigit(text.front()) || text.front() == '.') {
    magnitude = wholeNumber<double>(text, std::chars_format::general);
  } else {
    const std::string word = lowercase(text.substr(0, 9));
    if (word == "inf" || word == "infinity") magnitude = std::numeric_limits<double>::infinity();
    if (word == "nan") magnitude = std::numeric_limits<double>::quiet_NaN();
  }
  return magnitude && negative ? std::optional(-*magnitude) : magnitude;
}

void appendPropertyListReal(std::string& text, double real) {
  if (std::isnan(real)) {
    text += "nan";
  } else if (std::isinf(real)) {
    text += real > 0 ? "+infinity" : "-infinity";
  } else {
    char digits[32];  // the longest is 24: "-2.2250738585072014e-308"
    const auto result = std::to_chars(std::begin(digits), std::end(digits), real);
    text.append(digits, result.ptr);
  }
}

std::optional<Date> parsePropertyListDate(std::string_view text) {
  using namespace std::chrono;
  constexpr std::string_view kPattern = "0000-00-00T00:00:00Z";
  text = trimmed(text);
  if (text.size() != kPattern.size()) return std::nullopt;
  for (std::size_t i = 0; i < kPattern.size(); ++i) {
    if (kPattern[i] == '0' ? !isDigit(text[i]) : text[i] != kPattern[i]) return std::nullopt;
  }
  const auto field = [text](std::size_t start, std::size_t length) {
    return *wholeNumber<int>(text.substr(start, length));
  };
  const year_month_day day{year{field(0, 4)}, month{static_cast<unsigned>(field(5, 2))},
                           std::chrono::day{static_cast<unsigned>(field(8, 2))}};
  const int hour = field(11, 2);
  const int minute = field(14, 2);
  const int second = field(17, 2);
  if (!day.ok() || day.year() < year{1} || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  return sys_days{day} + hours{hour} + minutes{minute} + seconds{second};
}

bool appendPropertyListDate(std::string& text, Date date) {
  using namespace std::chrono;
  constexpr sys_days kFirst = year{1} / 1 / 1;
  constexpr sys_days kEnd = year{10000} / 1 / 1;
  if (date < kFirst || date >= kEnd) return false;
  const sys_days day = floor<days>(date);
  const year_month_day ymd{day};
  const hh_mm_ss time{floor<seconds>(date) - day};
  fmt::format_to(std::back_inserter(text), "{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z",
                 static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()),
                 static_cast<unsigned>(ymd.day()), time.hours().count(), time.minutes().count(),
                 time.seconds().count());
  return true;
}

}  // namespace vt
