#include "platform/linux/worker/IncomingBytes.h"

#include <unistd.h>

#include <array>

#include "platform/linux/worker/AwaitDescriptors.h"

namespace vt {

bool IncomingBytes::readSome() {
  std::array<char, 65536> block;
  const ssize_t count = ::read(pipe_.get(), block.data(), block.size());
  if (count < 0 && errno == EINTR) return true;
  if (count > 0 && bytes_.size() + static_cast<std::size_t>(count) <= most_) {
    bytes_.append(block.data(), static_cast<std::size_t>(count));
    return true;
  }
  isOver_ = true;
  isGood_ = count == 0;
  return false;
}

void IncomingBytes::readToEnd(std::chrono::steady_clock::time_point deadline) {
  do {
    std::array<pollfd, 1> awaited{{{pipe_.get(), POLLIN, 0}}};
    if (!awaitDescriptors(awaited, deadline)) return;
  } while (readSome());
}

}  // namespace vt
