#include "metadata/store/MemoryPiece.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace vt {

MemoryPiece::MemoryPiece(bool isHuge) {
  // Large pages lie at multiples of their size: twice as much is sure to hold one.
  const std::size_t asked = 2 * kBytes;
  void* const memory =
      ::mmap(nullptr, asked, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  char* const begin = static_cast<char*>(memory);
  const std::size_t before = -reinterpret_cast<std::uintptr_t>(begin) % kBytes;
  bytes_ = begin + before;
  if (before > 0) ::munmap(begin, before);
  if (before < kBytes) ::munmap(bytes_ + kBytes, kBytes - before);
  if (isHuge) ::madvise(bytes_, kBytes, MADV_HUGEPAGE);
}

MemoryPiece::~MemoryPiece() {
  if (bytes_ != nullptr) ::munmap(bytes_, kBytes);
}

}  // namespace vt
