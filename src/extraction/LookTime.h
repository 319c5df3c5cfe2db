#pragma once

#include <chrono>
#include <ctime>

namespace vt {

namespace detail {
/// When the process began to look into the file that it looks into now.
struct LookStart {
  std::clock_t processorTime = 0;
  std::chrono::steady_clock::time_point time = std::chrono::steady_clock::now();
};
inline LookStart& lookStart() {
  static LookStart start;
  return start;
}
}  // namespace detail

/// To be called before each file.
inline void countTimeFromNow() {
  detail::lookStart() = {std::clock(), std::chrono::steady_clock::now()};
}

/// Whether most of the time that a file may take, of a processor or by the clock, is used up:
/// whoever reads a long document then ends with what it has.
inline bool isTimeShort() {
  constexpr std::clock_t kProcessorSeconds = 7;  // of 10, or of the 9 that others have left
  constexpr std::chrono::seconds kTime{14};      // of 20, for disks that are slow
  const detail::LookStart& start = detail::lookStart();
  return std::clock() - start.processorTime > kProcessorSeconds * CLOCKS_PER_SEC ||
         std::chrono::steady_clock::now() - start.time > kTime;
}

}  // namespace vt
