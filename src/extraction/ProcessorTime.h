#pragma once

#include <ctime>

namespace vt {

/// Whether most of what a file may take of a processor is used up: whoever reads a long document
/// then ends with what it has. A process has one file.
inline bool isProcessorTimeShort() {
  constexpr std::clock_t kSeconds = 7;  // of 10
  return std::clock() > kSeconds * CLOCKS_PER_SEC;
}

}  // namespace vt
