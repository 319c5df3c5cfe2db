#pragma once

#include <ctime>

namespace vt {

namespace detail {
/// What the process had used before the file that it looks into now.
inline std::clock_t& processorTimeBefore() {
  static std::clock_t before = 0;
  return before;
}
}  // namespace detail

/// To be called before each file.
inline void countProcessorTimeFromNow() { detail::processorTimeBefore() = std::clock(); }

/// Whether most of what a file may take of a processor is used up: whoever reads a long document
/// then ends with what it has.
inline bool isProcessorTimeShort() {
  constexpr std::clock_t kSeconds = 7;  // of 10, or of the 9 that others have left
  return std::clock() - detail::processorTimeBefore() > kSeconds * CLOCKS_PER_SEC;
}

}  // namespace vt
