#pragma once

#include <memory>

#include "platform/Platform.h"
#include "platform/linux/Environment.h"

namespace vt {

/// linuxServices() and linuxServiceDiscovery(): what a program needs that starts the server. In a
/// library of its own (vistaro_server), so that programs that only search do not load Avahi.
std::shared_ptr<Platform> serverPlatform(const Environment& environment);

}  // namespace vt
