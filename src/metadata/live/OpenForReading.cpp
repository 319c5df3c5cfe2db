#include "metadata/live/OpenForReading.h"

#include <fcntl.h>

#include <cerrno>

namespace vt {

Descriptor openForReading(int folder, const char* name, int flags) {
  flags |= O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
  Descriptor file(openat(folder, name, flags | O_NOATIME));
  // Only the owner may leave the access time alone; the kernel then moves it at most once a day.
  if (!file.isOpen() && errno == EPERM) file = Descriptor(openat(folder, name, flags));
  return file;
}

}  // namespace vt
