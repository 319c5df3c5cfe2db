#pragma once

#include <errno.h>
#include <poll.h>

#include <chrono>
#include <span>

namespace vt {

/// Waits until one of the descriptors has something to read, or was closed at its other end; what
/// it waits for is said there afterwards. False when that is not before `deadline`; after that it
/// only looks.
inline bool awaitDescriptors(std::span<pollfd> awaited,
                             std::chrono::steady_clock::time_point deadline) {
  for (;;) {
    const auto now = std::chrono::steady_clock::now();
    const auto left = deadline <= now
                          ? std::chrono::milliseconds(0)
                          : std::chrono::ceil<std::chrono::milliseconds>(deadline - now);
    const int ready = ::poll(awaited.data(), awaited.size(), static_cast<int>(left.count()));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

}  // namespace vt
