#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vt::tool {

/// What was typed behind `vistaro index`.
struct IndexOptions {
  std::vector<std::string> folders;  ///< none: the search folders of the settings
  bool once = false;
  bool namesOnly = false;  ///< no look into files
  bool verify = false;
  bool status = false;
  bool watch = false;         ///< publish what changes when it does
  std::uint32_t minutes = 5;  ///< between the beginnings of two crawls, or of what is not watched
  std::uint32_t crawlHours = 24;  ///< between crawls of everything, while watching
  bool json = false;
};

}  // namespace vt::tool
