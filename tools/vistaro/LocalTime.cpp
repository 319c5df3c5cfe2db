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
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}Z", std::chrono::floor<std::chrono::seconds>(date));
}

}  // namespace vt::tool
