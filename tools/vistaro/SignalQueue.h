#pragma once

#include <signal.h>

#include <chrono>
#include <cstdint>

#include "metadata/live/Descriptor.h"

namespace vt::tool {

/// Lets a long-running command ask whether a signal has come, between steps that must not be cut
/// short. To be made before any thread is started: those started later leave the signals alone too.
class SignalQueue {
 public:
  enum class Wish : std::uint8_t {
    kNone,
    kEnd,   ///< SIGINT, SIGTERM, SIGHUP
    kAgain  ///< SIGUSR1: do at once what is done from time to time
  };

  SignalQueue();
  SignalQueue(const SignalQueue&) = delete;
  SignalQueue& operator=(const SignalQueue&) = delete;
  ~SignalQueue();

  /// Gets ready to be read when next() would not have to wait; it is not to be read itself.
  int descriptor() const { return pending_.get(); }

  /// Takes the next signal, which may have come before; kNone when `patience` passes without one.
  Wish next(std::chrono::milliseconds patience) const;

 private:
  sigset_t awaited_;
  sigset_t before_;
  Descriptor pending_;
};

}  // namespace vt::tool
