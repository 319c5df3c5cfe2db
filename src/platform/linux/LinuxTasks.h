#pragma once

#include "platform/Tasks.h"

namespace vt {

/// The programs of this machine.
class LinuxTasks final : public Tasks {
 public:
  TaskResult run(const Task& task) override;
};

}  // namespace vt
