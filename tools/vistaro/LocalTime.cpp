#include "vistaro/LocalTime.h"

namespace vt::tool {

std::optional<std::tm> localTime(Date date) {
  const std::time_t time =
      std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
  std::tm local{};
  if (!localtime_r(&time, &local)) return std::nullopt;
  return local;
}

}  // namespace vt::tool
