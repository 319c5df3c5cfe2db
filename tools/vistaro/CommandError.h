#pragma once

#include <string>

#include "foundation/FunctionRef.h"
#include "vistaro/Exit.h"

namespace vt::tool {

/// Ends a command with a line on standard error.
struct CommandError {
  Exit code;
  std::string text;
};

/// Runs a command's body. Gives its exit code, or prints a CommandError that it throws and gives
/// the code of that. The library's log is shown as it comes with `showsLog`; else it is kept back,
/// and printed before the error of a failure.
int reportingErrors(FunctionRef<int()> body, bool showsLog = false);

}  // namespace vt::tool
