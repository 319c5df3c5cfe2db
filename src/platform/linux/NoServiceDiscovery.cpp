#include "foundation/NSLog.h"
#include "platform/linux/LinuxServiceDiscovery.h"

namespace vt {
namespace {

class UnannouncedService final : public NetService {
 public:
  explicit UnannouncedService(std::string name) : name_(std::move(name)) {}
  void publish() override {
    NSLog("The service \"%@\" is not announced on the network: built without Avahi", name_);
  }

 private:
  std::string name_;
};

class NoServiceDiscovery final : public ServiceDiscovery {
 public:
  std::shared_ptr<NetService> serviceWithDomain(const std::string& /*domain*/,
                                                const std::string& /*type*/,
                                                const std::string& name,
                                                std::int32_t /*port*/) override {
    return std::make_shared<UnannouncedService>(name);
  }
  void processEvents() override {}
};

}  // namespace

std::shared_ptr<ServiceDiscovery> linuxServiceDiscovery() {
  return std::make_shared<NoServiceDiscovery>();
}

}  // namespace vt
