#pragma once

#include <functional>
#include <optional>
#include <string>

#include "metadata/store/StoreError.h"

namespace vt {

/// Runs a piece of work beside its caller, who goes on; one at a time.
class BackgroundRunner {
 public:
  virtual ~BackgroundRunner() = default;

  /// Starts it. It may run in a copy of this process, with no open file of its own but
  /// `keptDescriptor`: what it is to be known by it leaves in SharedMemory.
  virtual std::optional<StoreError> start(std::function<void()> work, int keptDescriptor) = 0;
  /// How it ended, "" when it came to its own end; nothing while it runs.
  virtual std::optional<std::string> ended() = 0;
  /// Ends it wherever it is, and comes back when it has.
  virtual void end() = 0;
};

/// Runs it at once: whoever starts it waits.
class WaitingRunner final : public BackgroundRunner {
 public:
  std::optional<StoreError> start(std::function<void()> work, int /*keptDescriptor*/) override {
    work();
    return std::nullopt;
  }
  std::optional<std::string> ended() override { return ""; }
  void end() override {}
};

}  // namespace vt
