#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vt::tool {

/// What was typed behind `vistaro search`.
struct SearchOptions {
  std::vector<std::string> words;
  std::optional<std::string> user;
  std::vector<std::string> paths;
  std::optional<std::string> folder;  ///< title of a search folder of the settings
  std::optional<std::string> kind;
  std::optional<std::string> sort;
  bool descending = false;
  std::optional<std::uint32_t> page;     ///< from 1
  std::optional<std::uint32_t> perPage;  ///< at least 1
  bool json = false;
  bool raw = false;
  bool explain = false;
  bool verbose = false;
};

}  // namespace vt::tool
