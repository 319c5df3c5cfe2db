#pragma once

#include <cstddef>
#include <utility>

namespace vt {

/// Memory by the piece, straight from the system and straight back to it, which then has it whole
/// for something else. Takes none before it is touched.
class MemoryPiece {
 public:
  /// The size of a large page.
  static constexpr std::size_t kBytes = std::size_t{1} << 21;

  /// `isHuge` asks for one large page, which is quicker to get when all of it will be used. Throws
  /// std::bad_alloc.
  explicit MemoryPiece(bool isHuge);
  MemoryPiece(MemoryPiece&& other) noexcept : bytes_(std::exchange(other.bytes_, nullptr)) {}
  MemoryPiece& operator=(MemoryPiece&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    return *this;
  }
  ~MemoryPiece();

  /// Aligned for numbers of any kind.
  char* bytes() const { return bytes_; }

 private:
  char* bytes_;
};

}  // namespace vt
