#pragma once

#include <errno.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/Tasks.h"

namespace vt {

/// Programs that a test scripts, and a record of what was run. A program without a script is not
/// there.
class MemoryTasks final : public Tasks {
 public:
  using Script = std::function<TaskResult(const Task&)>;

  /// What the program called `program` does from now on.
  void setScript(const std::string& program, Script script) {
    scripts_[program] = std::move(script);
  }
  /// Every task that was run, in that order.
  const std::vector<Task>& runs() const { return runs_; }

  TaskResult run(const Task& task) override {
    runs_.push_back(task);
    const auto found = scripts_.find(task.program);
    if (found == scripts_.end()) return {TaskEnd::kNotStarted, ENOENT, {}, {}};
    TaskResult result = found->second(task);
    if (result.output.size() > task.outputLimit) {
      result.end = TaskEnd::kTooMuchOutput;
      result.status = 0;
      result.output.resize(task.outputLimit);
    }
    if (result.errors.size() > kKeptErrorBytes) result.errors.resize(kKeptErrorBytes);
    return result;
  }

 private:
  std::map<std::string, Script> scripts_;
  std::vector<Task> runs_;
};

}  // namespace vt
