#include "vistaro/CollectedLog.h"

#include <cstdio>

namespace vt::tool {

CollectedLog::CollectedLog(bool shown)
    : redirection_([this, shown](std::string_view text) {
        const std::string line = formatLogLine(text);
        if (shown) {
          std::fwrite(line.data(), 1, line.size(), stderr);
        } else {
          lines_ += line;
        }
      }) {}

void CollectedLog::show() const { std::fwrite(lines_.data(), 1, lines_.size(), stderr); }

}  // namespace vt::tool
