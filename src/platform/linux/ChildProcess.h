#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/FileDescriptor.h"

namespace vt {

/// The folders in which programs are looked for: never those of whoever started us.
inline constexpr const char* kProgramFolders =
    "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

/// Another program, running in a process group of its own in the folder "/". Its only open files
/// are the standard ones, its signals are at their defaults. Killed and collected when this goes.
class ChildProcess {
 public:
  /// What becomes the standard descriptors; those that are absent become "/dev/null".
  struct Standard {
    std::optional<int> input;
    std::optional<int> output;
    std::optional<int> errors;
  };

  /// Starts the program at the absolute path `path`. `arguments` begins with the program's name;
  /// `environment` is the whole of it, as "NAME=value".
  ChildProcess(const std::string& path, std::vector<std::string> arguments,
               std::vector<std::string> environment, const Standard& standard);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  /// 0 when the program was started, else errno.
  int startError() const { return startError_; }
  /// A descriptor that becomes readable when the process has ended.
  int handle() const { return handle_->get(); }
  /// Kills the process, and what else is in its group.
  void kill();
  /// Waits for the end. The status as of waitpid(); nothing when the application ignores or
  /// collects its children itself, or when it was collected before.
  std::optional<int> collect();

 private:
  pid_t pid_ = -1;
  int startError_ = 0;
  std::optional<FileDescriptor> handle_;
};

}  // namespace vt
