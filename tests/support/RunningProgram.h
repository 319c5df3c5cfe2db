#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// A program that runs while this object lives, and is ended with it.
class RunningProgram {
 public:
  /// `arguments` begins with the program's path or its name, looked up in PATH; `environment` is
  /// set on top of this process's own. The process is that program once this object is made, or has
  /// ended when there is none. Its standard input stays open until it is to end.
  explicit RunningProgram(const std::vector<std::string>& arguments,
                          const std::map<std::string, std::string>& environment = {});
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram() { end(); }

  pid_t pid() const { return pid_; }

  /// Waits for a line that holds `text`, on standard output or error; "" when the program ends or
  /// `limit` passes before there is one.
  std::string waitForLine(std::string_view text,
                          std::chrono::seconds limit = std::chrono::seconds(20));

  /// Everything printed so far that waitForLine() has read.
  const std::string& output() const { return output_; }

  /// Asks the process to end, by SIGTERM, makes it end when it does not within five seconds, and
  /// waits until it has.
  void end();

 private:
  pid_t pid_ = -1;
  int input_ = -1;
  int outputEnd_ = -1;
  std::string output_;
  std::size_t searched_ = 0;
};

}  // namespace vt
