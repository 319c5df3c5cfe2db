#pragma once

#include <string>
#include <string_view>

namespace vt {

/// `text` with A to Z in lower case and every other byte as it is, whatever the locale.
inline std::string asciiLowercase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

}  // namespace vt
