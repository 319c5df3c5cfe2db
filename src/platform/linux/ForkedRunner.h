#pragma once

#include <sys/types.h>

#include "metadata/update/BackgroundRunner.h"

namespace vt {

/// Runs work in a copy of this process, with the lowest priority for processor and disk. The copy
/// ends with this process, however that ends, and is waited for. This process must not have threads
/// that the work would wait for.
class ForkedRunner final : public BackgroundRunner {
 public:
  ForkedRunner() = default;
  ForkedRunner(const ForkedRunner&) = delete;
  ForkedRunner& operator=(const ForkedRunner&) = delete;
  ~ForkedRunner() override { end(); }

  std::optional<StoreError> start(std::function<void()> work, int keptDescriptor) override;
  std::optional<std::string> ended() override;
  void end() override;

  /// The process that runs the work; 0 when none does.
  pid_t process() const { return process_; }

 private:
  pid_t process_ = 0;
  std::string ending_;
};

}  // namespace vt
