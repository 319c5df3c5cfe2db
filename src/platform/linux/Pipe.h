#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <optional>
#include <utility>

#include "platform/linux/FileDescriptor.h"

namespace vt {

/// Both ends of a pipe that no program inherits by accident.
struct Pipe {
  FileDescriptor read;
  FileDescriptor write;
};

/// A new pipe; nothing when descriptors have run out. Both ends lie above the standard descriptors,
/// which the application may have closed: a child's are put in their place.
inline std::optional<Pipe> makePipe() {
  const auto aboveStandard = [](int descriptor) {
    FileDescriptor given(descriptor);
    if (given.get() > STDERR_FILENO) return given;
    return FileDescriptor(::fcntl(given.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  };
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  Pipe pipe{aboveStandard(ends[0]), aboveStandard(ends[1])};
  if (!pipe.read || !pipe.write) return std::nullopt;
  return pipe;
}

}  // namespace vt
