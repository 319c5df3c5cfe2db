#pragma once

#include <string>

#include "foundation/NSLog.h"

namespace vt::tool {

/// Keeps the library's log off the screen while it lives, unless it is asked for.
class CollectedLog {
 public:
  /// With `shown` the lines go to standard error as they come.
  explicit CollectedLog(bool shown);

  /// Prints on standard error what was kept back.
  void show() const;

 private:
  std::string lines_;
  LogRedirection redirection_;
};

}  // namespace vt::tool
