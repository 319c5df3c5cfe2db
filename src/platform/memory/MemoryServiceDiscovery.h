#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/ServiceDiscovery.h"

namespace vt {

/// Writes down what is made and published.
class MemoryServiceDiscovery final : public ServiceDiscovery {
 public:
  struct Service {
    std::string domain;
    std::string type;
    std::string name;
    std::int32_t port = 0;
    int publications = 0;  ///< how often publish() was called
    bool isAlive = true;   ///< the service object is still held by somebody
  };

  /// Makes no service from now on.
  void refuse() { refuses_ = true; }
  /// All services made so far, in order.
  std::vector<Service> services() const {
    std::vector<Service> services;
    for (const auto& service : services_) services.push_back(*service);
    return services;
  }
  int processEventsCalls() const { return processEventsCalls_; }

  std::shared_ptr<NetService> serviceWithDomain(const std::string& domain, const std::string& type,
                                                const std::string& name,
                                                std::int32_t port) override {
    if (refuses_) return nullptr;
    services_.push_back(std::make_shared<Service>(Service{domain, type, name, port}));
    return std::make_shared<RecordedService>(services_.back());
  }
  void processEvents() override { ++processEventsCalls_; }

 private:
  class RecordedService final : public NetService {
   public:
    explicit RecordedService(std::shared_ptr<Service> service) : service_(std::move(service)) {}
    RecordedService(const RecordedService&) = delete;
    RecordedService& operator=(const RecordedService&) = delete;
    ~RecordedService() override { service_->isAlive = false; }
    void publish() override { ++service_->publications; }

   private:
    std::shared_ptr<Service> service_;
  };

  bool refuses_ = false;
  int processEventsCalls_ = 0;
  std::vector<std::shared_ptr<Service>> services_;  // each shared with the object handed out
};

}  // namespace vt
