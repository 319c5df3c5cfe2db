#pragma once

#include <unistd.h>

#include <utility>

namespace vt {

/// Owns an open file descriptor, or none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }
  ~Descriptor() { close(); }

  bool isOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  /// Hands the descriptor over to the caller, who closes it.
  int release() { return std::exchange(descriptor_, -1); }
  void close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }

 private:
  int descriptor_ = -1;
};

}  // namespace vt
