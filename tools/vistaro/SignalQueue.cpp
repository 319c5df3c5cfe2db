#include "vistaro/SignalQueue.h"

#include <sys/signalfd.h>

#include <algorithm>
#include <cerrno>

namespace vt::tool {

SignalQueue::SignalQueue() {
  sigemptyset(&awaited_);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1}) sigaddset(&awaited_, signal);
  pthread_sigmask(SIG_BLOCK, &awaited_, &before_);
  pending_ = Descriptor(signalfd(-1, &awaited_, SFD_CLOEXEC | SFD_NONBLOCK));
}

SignalQueue::~SignalQueue() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

SignalQueue::Wish SignalQueue::next(std::chrono::milliseconds patience) const {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + patience;
  while (true) {
    const auto left = std::max(end - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec time{static_cast<time_t>(seconds.count()),
                        std::chrono::nanoseconds(left - seconds).count()};
    const int signal = sigtimedwait(&awaited_, nullptr, &time);
    if (signal == SIGUSR1) return Wish::kAgain;
    if (signal > 0) return Wish::kEnd;
    // Another signal, such as that of a process which was stopped and goes on.
    if (errno != EINTR) return Wish::kNone;
  }
}

}  // namespace vt::tool
