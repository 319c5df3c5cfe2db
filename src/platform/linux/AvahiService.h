#pragma once

#include <avahi-client/client.h>
#include <avahi-client/publish.h>
#include <avahi-common/simple-watch.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/ServiceDiscovery.h"

namespace vt {

/// One service, and this process's own connection to the Avahi daemon for it.
class AvahiService final : public NetService {
 public:
  AvahiService(std::string domain, const std::string& type, const std::string& name,
               std::int32_t port);
  AvahiService(const AvahiService&) = delete;
  AvahiService& operator=(const AvahiService&) = delete;
  ~AvahiService() override = default;

  /// Hands the service over; once.
  void publish() override;

  /// Deals with what the daemon has told since. Never waits.
  void processEvents();

 private:
  template <auto Free>
  struct FreedBy {
    template <class T>
    void operator()(T* object) const {
      Free(object);
    }
  };

  static void clientChanged(AvahiClient* client, AvahiClientState state, void* self);
  static void groupChanged(AvahiEntryGroup* group, AvahiEntryGroupState state, void* self);

  void connect();
  void waitUntilHandedOver(std::chrono::milliseconds limit);
  void announce(AvahiClient* client);
  void takeAnotherName();
  void giveUp(std::string_view reason);

  std::string domain_;
  std::string type_;
  std::string name_;
  std::int32_t port_;

  bool isPublished_ = false;
  bool isHandedOver_ = false;
  bool hasLostDaemon_ = false;
  bool hasGivenUp_ = false;
  AvahiClientState clientState_ = AVAHI_CLIENT_CONNECTING;
  // In this order: the client watches through the poll, and the groups are the client's.
  std::unique_ptr<AvahiSimplePoll, FreedBy<avahi_simple_poll_free>> poll_;
  std::unique_ptr<AvahiClient, FreedBy<avahi_client_free>> client_;
  AvahiEntryGroup* group_ = nullptr;
};

}  // namespace vt
