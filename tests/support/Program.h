#pragma once

#include <map>
#include <string>
#include <vector>

namespace vt {

/// What a finished program left behind.
struct ProgramResult {
  int exitCode = -1;  ///< 128 and the signal's number when a signal ended it
  std::string output;
  std::string errors;
};

/// Runs a program and waits for it. `arguments` begins with the program's path or its name, looked
/// up in PATH; `environment` is set on top of this process's own. Its standard input is empty.
ProgramResult runProgram(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment = {});

}  // namespace vt
