#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/NSLog.h"

namespace vt {

/// Keeps the log lines of its lifetime instead of writing them.
class LogCapture {
 public:
  const std::vector<std::string>& lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
  LogRedirection redirection_{[this](std::string_view text) { lines_.emplace_back(text); }};
};

}  // namespace vt
