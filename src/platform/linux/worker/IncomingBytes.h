#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "platform/linux/FileDescriptor.h"

namespace vt {

/// What comes through a pipe, up to a bound.
class IncomingBytes {
 public:
  IncomingBytes(FileDescriptor pipe, std::size_t most) : pipe_(std::move(pipe)), most_(most) {}

  /// To be waited for until it can be read; -1 once there is nothing more to come.
  int descriptor() const { return isOver_ ? -1 : pipe_.get(); }
  /// Takes what is there, waiting only where nothing is. False once nothing more is to come.
  bool readSome();
  /// Takes all until its end or `deadline`.
  void readToEnd(std::chrono::steady_clock::time_point deadline);

  /// Whether it ended in time, and was no more than the bound.
  bool isWhole() const { return isOver_ && isGood_; }
  /// How many have come.
  std::size_t size() const { return bytes_.size(); }
  /// What has come; to be taken once.
  std::string take() { return std::move(bytes_); }

 private:
  FileDescriptor pipe_;
  std::size_t most_;
  std::string bytes_;
  bool isOver_ = false;
  bool isGood_ = true;
};

}  // namespace vt
