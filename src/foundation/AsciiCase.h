#pragma once

#include <string>
#include <string_view>

namespace vt {

/// A to Z in lower case, every other byte as it is.
constexpr char asciiLower(char c) {
  return static_cast<char>(c + (static_cast<unsigned>(c - 'A') < 26 ? 'a' - 'A' : 0));
}

/// `text` with A to Z in lower case and every other byte as it is, whatever the locale.
inline std::string asciiLowercase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = asciiLower(c);
  return lower;
}

}  // namespace vt
