#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace vt {

/// What the kernels look for: `text`, and the places in it of the two bytes that they compare.
struct ScannedNeedle {
  std::string_view text;
  std::size_t rarest;
  std::size_t second;

  bool isAt(const char* place) const { return std::memcmp(place, text.data(), text.size()) == 0; }
};

// Each answers the first occurrence in `text` from `from` on, or npos, and reads nothing outside.
#if defined(__x86_64__)
std::size_t findWithSSE2(const ScannedNeedle& needle, std::string_view text, std::size_t from);
std::size_t findWithAVX2(const ScannedNeedle& needle, std::string_view text, std::size_t from);
#endif

}  // namespace vt
