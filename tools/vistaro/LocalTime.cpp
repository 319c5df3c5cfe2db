#include "vistaro/LocalTime.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace vt::tool {

std::optional<std::tm> localTime(Date date) {
  const std::time_t time =
      std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
  std::tm local{};
  if (!localtime_r(&time, &local)) return std::nullopt;
  return local;
}

std::string localTimeText(Date date) {
  const std::optional<std::tm> local = localTime(date);
  return local ? fmt::format("{:%Y-%m-%d %H:%M:%S}", *local) : std::string();
}

std::string instantText(Date date) {
  using namespace std::chrono;
  const auto day = floor<days>(date);
  const year_month_day calendar(day);
  const int year = static_cast<int>(calendar.year());
  if (year < 0 || year > 9999) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}Z", floor<seconds>(date));
  }
  const hh_mm_ss time(floor<seconds>(date - day));
  std::string text =
      "0000-00-00T00:00:00Z";  // a report holds thousands: fmt takes four times as long
  const auto put = [&text](std::size_t end, long number) {
    for (; number != 0; number /= 10) text[--end] = static_cast<char>('0' + number % 10);
  };
  put(4, year);
  put(7, static_cast<long>(static_cast<unsigned>(calendar.month())));
  put(10, static_cast<long>(static_cast<unsigned>(calendar.day())));
  put(13, time.hours().count());
  put(16, time.minutes().count());
  put(19, time.seconds().count());
  return text;
}

}  // namespace vt::tool
