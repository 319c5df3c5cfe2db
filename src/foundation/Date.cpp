#include "foundation/Date.h"

#include <cmath>
#include <cstdint>

namespace vt {

double secondsSinceReferenceDate(Date date) {
  const std::chrono::microseconds since = date - kReferenceDate;
  const auto whole = std::chrono::floor<std::chrono::seconds>(since);
  return static_cast<double>(whole.count()) + static_cast<double>((since - whole).count()) / 1e6;
}

Date dateFromReferenceSeconds(double seconds) {
  if (std::isnan(seconds)) return kReferenceDate;
  // 9.2e12 s is what an int64 of microseconds holds on either side, less a little.
  constexpr double kLimit = 9.2e12;
  const double clamped = std::fmin(std::fmax(seconds, -kLimit), kLimit);
  // Apart: as one number of microseconds a double is exact only from 1715 to 2286.
  const double whole = std::floor(clamped);
  return kReferenceDate + std::chrono::seconds{static_cast<std::int64_t>(whole)} +
         std::chrono::microseconds{std::llround((clamped - whole) * 1e6)};
}

}  // namespace vt
