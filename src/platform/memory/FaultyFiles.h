#pragma once

#include <errno.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include "platform/linux/PosixFiles.h"

namespace vt {

/// Real files, of which one chosen system call fails when a file is replaced or kept.
class FaultyFiles final : public PosixFiles {
 public:
  /// Makes the `count`th call from now on, from 0, fail with `errorNumber`; those before and after
  /// it succeed. A failing write has written half of its bytes, an interrupted one none.
  void failAfter(int count, int errorNumber) {
    remaining_ = count;
    errorNumber_ = errorNumber;
    didFail_ = false;
  }

  /// Leaves all waiting for the disk out from now on, or waits so long each time; for what is about
  /// something else.
  void skipSyncs(std::chrono::microseconds wait = std::chrono::microseconds(0)) {
    waitInsteadOfSync_ = wait;
  }

  /// Whether the chosen call was reached.
  bool didFail() const { return didFail_; }

 protected:
  int makeTemporary(std::string& pathPattern) override {
    return fails() ? -1 : PosixFiles::makeTemporary(pathPattern);
  }
  ssize_t writeBytes(int descriptor, const char* bytes, std::size_t count) override {
    if (!fails()) return PosixFiles::writeBytes(descriptor, bytes, count);
    if (errorNumber_ != EINTR) PosixFiles::writeBytes(descriptor, bytes, count / 2);
    errno = errorNumber_;
    return -1;
  }
  int sync(int descriptor) override {
    if (fails()) return -1;
    if (!waitInsteadOfSync_) return PosixFiles::sync(descriptor);
    if (waitInsteadOfSync_->count() > 0) std::this_thread::sleep_for(*waitInsteadOfSync_);
    return 0;
  }
  int rename(const char* from, const char* to) override {
    return fails() ? -1 : PosixFiles::rename(from, to);
  }
  int link(const char* from, const char* to) override {
    return fails() ? -1 : PosixFiles::link(from, to);
  }

 private:
  bool fails() {
    if (remaining_-- != 0) return false;
    didFail_ = true;
    errno = errorNumber_;
    return true;
  }

  int remaining_ = -1;
  int errorNumber_ = 0;
  bool didFail_ = false;
  std::optional<std::chrono::microseconds> waitInsteadOfSync_;
};

}  // namespace vt
