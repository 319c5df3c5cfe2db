#include <vector>

#include "platform/linux/AvahiService.h"
#include "platform/linux/LinuxServiceDiscovery.h"

namespace vt {
namespace {

class AvahiServiceDiscovery final : public ServiceDiscovery {
 public:
  std::shared_ptr<NetService> serviceWithDomain(const std::string& domain, const std::string& type,
                                                const std::string& name,
                                                std::int32_t port) override {
    auto service = std::make_shared<AvahiService>(domain, type, name, port);
    services_.push_back(service);
    return service;
  }

  void processEvents() override {
    std::erase_if(services_, [](const auto& service) { return service.expired(); });
    for (const std::weak_ptr<AvahiService>& known : services_) {
      if (const std::shared_ptr<AvahiService> service = known.lock()) service->processEvents();
    }
  }

 private:
  std::vector<std::weak_ptr<AvahiService>> services_;  // weak: whoever made a service ends it
};

}  // namespace

std::shared_ptr<ServiceDiscovery> linuxServiceDiscovery() {
  return std::make_shared<AvahiServiceDiscovery>();
}

}  // namespace vt
