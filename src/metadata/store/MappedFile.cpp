#include "metadata/store/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>

#include "metadata/live/Descriptor.h"

namespace vt {

Result<MappedFile, StoreError> MappedFile::open(int folder, const std::string& name,
                                                const std::string& shownPath) {
  // Not blocking, or opening a FIFO would wait for somebody to write into it.
  const Descriptor file(
      ::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) return systemError(errno, "open", shownPath);
  struct stat status{};
  if (::fstat(file.get(), &status) != 0) return systemError(errno, "open", shownPath);
  if (!S_ISREG(status.st_mode)) return damageError(shownPath, "it is no plain file");
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size == 0) return MappedFile(std::string_view());
  // Shared, since nothing is written: the pages are those of the kernel's cache either way.
  void* const memory = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, file.get(), 0);
  if (memory == MAP_FAILED) return systemError(errno, "map", shownPath);
  // What the cache does not hold is to come in large pages, where the file system has them: going
  // through all names is then a page fault for every 2 MiB and not for every 64 KiB.
  ::madvise(memory, size, MADV_HUGEPAGE);
  return MappedFile({static_cast<const char*>(memory), size});
}

MappedFile::~MappedFile() {
  if (!bytes_.empty()) ::munmap(const_cast<char*>(bytes_.data()), bytes_.size());
}

void MappedFile::dropPages() const {
  if (!bytes_.empty()) ::madvise(const_cast<char*>(bytes_.data()), bytes_.size(), MADV_DONTNEED);
}

}  // namespace vt
