#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "metadata/update/BackgroundRunner.h"

namespace vt {

/// Runs work when the test says so, in between whatever else it does.
class DeferredRunner final : public BackgroundRunner {
 public:
  std::optional<StoreError> start(std::function<void()> work, int /*keptDescriptor*/) override {
    work_ = std::move(work);
    return std::nullopt;
  }
  std::optional<std::string> ended() override {
    return work_ ? std::nullopt : std::optional(ending_);
  }
  void end() override { work_ = nullptr; }

  bool isWaiting() const { return work_ != nullptr; }
  void run() {
    if (const std::function<void()> work = std::exchange(work_, nullptr)) work();
  }
  /// As if a signal had ended it before it did anything.
  void kill() {
    work_ = nullptr;
    ending_ = "ended by signal 9";
  }

 private:
  std::function<void()> work_;
  std::string ending_;
};

}  // namespace vt
