#pragma once

#include "metadata/live/Descriptor.h"

namespace vt {

/// Opens the entry `name` of the open folder `folder` for reading: never through a link, without
/// waiting for a pipe's other end, and without moving its access time where that may be asked
/// (owner or superuser). `flags` go with those. Closed when it cannot be opened; see errno.
Descriptor openForReading(int folder, const char* name, int flags);

}  // namespace vt
