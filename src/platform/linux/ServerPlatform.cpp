#include "platform/linux/ServerPlatform.h"

#include <utility>

#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/LinuxServiceDiscovery.h"

namespace vt {

std::shared_ptr<Platform> serverPlatform(const Environment& environment) {
  Platform::Services services = linuxServices(environment);
  services.serviceDiscovery = linuxServiceDiscovery();
  return std::make_shared<Platform>(std::move(services));
}

}  // namespace vt
