#pragma once

#include <memory>

#include "platform/Platform.h"
#include "platform/linux/Environment.h"

namespace vt {

/// The services of this machine, as the environment names their places. Accounts and passwords are
/// those of the files under the root prefix when it has any, else the machine's own. Without
/// readable tables of types and attributes there is no metadata index. Without service discovery:
/// only a server announces itself (see serverPlatform()).
Platform::Services linuxServices(const Environment& environment);

/// A platform of linuxServices().
std::shared_ptr<Platform> linuxPlatform(const Environment& environment);

}  // namespace vt
