#pragma once

#include <errno.h>
#include <unistd.h>

#include <cstddef>
#include <string_view>

namespace vt::worker {

/// Writes all of the bytes. False when nobody takes them.
inline bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace vt::worker
