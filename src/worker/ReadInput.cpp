#include "worker/ReadInput.h"

#include <errno.h>
#include <unistd.h>

namespace vt::worker {

std::string readBeginning(int descriptor, std::uint64_t limit) {
  std::string bytes;
  char buffer[65536];
  while (bytes.size() < limit) {
    const std::size_t wanted = std::min<std::uint64_t>(sizeof buffer, limit - bytes.size());
    const ssize_t count = ::pread(descriptor, buffer, wanted, static_cast<off_t>(bytes.size()));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    bytes.append(buffer, static_cast<std::size_t>(count));
  }
  return bytes;
}

std::optional<std::string> readInput(int descriptor, std::uint64_t limit) {
  std::string bytes = readBeginning(descriptor, limit + 1);
  if (bytes.size() > limit) return std::nullopt;
  return bytes;
}

}  // namespace vt::worker
