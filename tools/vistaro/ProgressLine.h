#pragma once

#include <chrono>
#include <string>

#include "foundation/FunctionRef.h"

namespace vt::tool {

/// The one line that tells of long work while it runs, as the bytes that show and remove it.
///
/// Nothing is shown in the first second, which most work does not reach, and then at most ten
/// times a second. No state of the terminal is changed, so that nothing is left to restore when the
/// command is interrupted.
class ProgressLine {
 public:
  using Clock = std::chrono::steady_clock;

  explicit ProgressLine(Clock::time_point start) : start_(start) {}

  /// What to write now to show `text`, which is made only then; empty when it is too early for
  /// that.
  std::string update(Clock::time_point now, FunctionRef<std::string()> text);
  /// What to write to remove the line; empty when none is shown.
  std::string remove();

 private:
  Clock::time_point start_;
  Clock::time_point shownAt_{};
  bool isShown_ = false;
};

}  // namespace vt::tool
