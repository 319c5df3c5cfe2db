#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace vt {

/// A program to be run once, and how much time and output it may take.
struct Task {
  /// An absolute path, or a bare name that is looked up in the system's own program folders.
  std::string program;
  /// Handed over as they are, without a shell. The program's own name is not among them.
  std::vector<std::string> arguments = {};
  /// By the clock, from the start of the program.
  std::chrono::milliseconds limit = std::chrono::seconds(10);
  /// How many bytes of standard output are taken.
  std::size_t outputLimit = std::size_t{16} << 20;
};

/// How a task came to its end.
enum class TaskEnd {
  kExited,         ///< by itself, with the exit status `status`
  kSignalled,      ///< by a signal that was not ours, `status`
  kTimedOut,       ///< it took longer than its limit and was killed
  kTooMuchOutput,  ///< it wrote more than its output limit and was killed
  kNotStarted,     ///< for the reason `status`, an errno: ENOENT when there is no such program
  kUnknown,        ///< it ended, but the application ignores or collects its children itself
};

/// What a finished task left behind.
struct TaskResult {
  TaskEnd end = TaskEnd::kNotStarted;
  int status = 0;
  std::string output;  ///< of a task that was killed, what had come by then; never over the limit
  std::string errors;  ///< the first 65,536 bytes of standard error; what follows is thrown away

  bool succeeded() const { return end == TaskEnd::kExited && status == 0; }

  friend bool operator==(const TaskResult&, const TaskResult&) = default;
};

/// Other programs, run to their end.
class Tasks {
 public:
  static constexpr std::size_t kKeptErrorBytes = 65536;

  virtual ~Tasks() = default;

  /// Runs the task and waits for it. The program gets nothing of ours: standard input is empty, no
  /// descriptor but the standard ones is open, every signal is at its default, the folder is "/"
  /// and the environment holds a fixed search path and a UTF-8 locale. It has the ids of the
  /// calling thread. What it started in its process group and left running is killed at its end.
  virtual TaskResult run(const Task& task) = 0;
};

}  // namespace vt
