#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace vt {

/// The bytes of the file; "" when there is none.
inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Makes or replaces the file, in place.
inline void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace vt
