#include "foundation/Date.h"

#include <cmath>
#include <limits>

namespace vt {

Date dateFromReferenceSeconds(double seconds) {
  if (std::isnan(seconds)) return kReferenceDate;
  // 9.2e12 s is what an int64 of microseconds holds on either side, less a little.
  constexpr double kLimit = 9.2e12;
  const double clamped = std::fmin(std::fmax(seconds, -kLimit), kLimit);
  return kReferenceDate + std::chrono::microseconds{std::llround(clamped * 1e6)};
}

}  // namespace vt
