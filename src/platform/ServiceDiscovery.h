#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace vt {

/// One service of this process on the local network.
class NetService {
 public:
  virtual ~NetService() = default;

  /// Announces the service, for as long as this object lives. What comes of it is not told: it
  /// shows on the network or it does not, and whoever gives up logs that.
  virtual void publish() = 0;
};

/// How this process makes its services known on the local network.
class ServiceDiscovery {
 public:
  virtual ~ServiceDiscovery() = default;

  /// `initWithDomain:type:name:port:`
  /// A service, not yet announced: `domain` "" for the default ones, `type` such as "_http._tcp.",
  /// `name` for people (UTF-8), `port` in host byte order. Nullptr when there can be no such
  /// object.
  virtual std::shared_ptr<NetService> serviceWithDomain(const std::string& domain,
                                                        const std::string& type,
                                                        const std::string& name,
                                                        std::int32_t port) = 0;

  /// Lets what has happened since reach the published services: a name that is taken is exchanged
  /// for another, and a daemon that was away is told again. Never waits for anything to happen. To
  /// be called now and then, about once a second, by the loop of whoever serves.
  virtual void processEvents() = 0;
};

}  // namespace vt
