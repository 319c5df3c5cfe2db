#pragma once

#include <errno.h>
#include <time.h>

#include <atomic>
#include <optional>

#include "metadata/store/StoreCalls.h"

namespace vt {

/// The system's calls, of which one fails.
class FailingCalls final : public StoreCalls {
 public:
  /// The call that fails: counted from 0 over all that are made.
  std::optional<int> failsAt;
  int error = EIO;
  bool writesHalf = false;     ///< a write that fails has written half before
  std::atomic<int> calls = 0;  // large segments are written by two threads
  const char* failed = "";

  int create(int folder, const char* name) override {
    return fails("create") ? -1 : StoreCalls::create(folder, name);
  }
  ssize_t write(int file, const void* bytes, std::size_t count, std::uint64_t offset) override {
    if (!fails("write")) return StoreCalls::write(file, bytes, count, offset);
    if (writesHalf) StoreCalls::write(file, bytes, count / 2, offset);
    errno = error;
    return -1;
  }
  // Which does not wait for the disk: no power is lost here.
  int sync(int) override { return fails("sync") ? -1 : 0; }
  int truncate(int file, std::uint64_t size) override {
    return fails("truncate") ? -1 : StoreCalls::truncate(file, size);
  }
  int rename(int folder, const char* from, const char* to) override {
    return fails("rename") ? -1 : StoreCalls::rename(folder, from, to);
  }

 private:
  bool fails(const char* what) {
    if (calls++ != failsAt) return false;
    failed = what;
    errno = error;
    return true;
  }
};

/// Calls whose syncs wait for nothing: what a killed process had written is the kernel's. They wait
/// as long as a fast disk would take, so that many a kill falls between two steps.
class FastCalls final : public StoreCalls {
 public:
  int sync(int) override {
    const timespec moment{0, 300'000};
    ::nanosleep(&moment, nullptr);
    return 0;
  }
};

}  // namespace vt
