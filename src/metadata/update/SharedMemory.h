#pragma once

#include <cstddef>
#include <span>
#include <utility>

#include "foundation/Result.h"
#include "metadata/store/StoreError.h"

namespace vt {

/// Memory, all zero at first, that this process shares with those that it forks. Takes no room
/// before it is written to.
class SharedMemory {
 public:
  static Result<SharedMemory, StoreError> of(std::size_t size);

  SharedMemory(SharedMemory&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}
  SharedMemory& operator=(SharedMemory&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    return *this;
  }
  ~SharedMemory();

  /// They begin where anything may.
  std::span<std::byte> bytes() const { return bytes_; }

 private:
  explicit SharedMemory(std::span<std::byte> bytes) : bytes_(bytes) {}

  std::span<std::byte> bytes_;
};

}  // namespace vt
