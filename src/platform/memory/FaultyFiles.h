#pragma once

#include <errno.h>

#include <string>

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

  /// Leaves all waiting for the disk out from now on; for what is about something else.
  void skipSyncs() { skipsSyncs_ = true; }

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
    return skipsSyncs_ ? 0 : PosixFiles::sync(descriptor);
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
  bool skipsSyncs_ = false;
};

}  // namespace vt
