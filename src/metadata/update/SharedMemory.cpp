#include "metadata/update/SharedMemory.h"

#include <sys/mman.h>

#include <cerrno>

namespace vt {

Result<SharedMemory, StoreError> SharedMemory::of(std::size_t size) {
  void* const start = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (start == MAP_FAILED) return systemError(errno, "share", "memory");
  return SharedMemory({static_cast<std::byte*>(start), size});
}

SharedMemory::~SharedMemory() {
  if (!bytes_.empty()) ::munmap(bytes_.data(), bytes_.size());
}

}  // namespace vt
