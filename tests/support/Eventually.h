#pragma once

#include <chrono>
#include <thread>

namespace vt {

/// Whether `condition` holds, now or within `limit`: for what another process does.
template <class Condition>
bool eventually(Condition condition, std::chrono::seconds limit = std::chrono::seconds(20)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

}  // namespace vt
