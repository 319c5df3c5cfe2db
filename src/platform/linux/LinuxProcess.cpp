#include "platform/linux/LinuxProcess.h"

#include <errno.h>
#include <stdlib.h>
#include <sys/random.h>
#include <time.h>
#include <unistd.h>

#include <chrono>

namespace vt {

Date LinuxProcess::now() const {
  return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
}

std::int32_t LinuxProcess::processIdentifier() const { return ::getpid(); }

void LinuxProcess::seedRandom() {
  unsigned seed = 0;
  // A system that has no random bytes to give yet must not hold up the start.
  if (::getrandom(&seed, sizeof seed, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof seed)) {
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    seed = static_cast<unsigned>(time.tv_nsec) ^ static_cast<unsigned>(time.tv_sec);
  }
  ::srandom(seed);
}

}  // namespace vt
