#include "platform/linux/AvahiService.h"

#include <avahi-common/alternative.h>
#include <avahi-common/domain.h>
#include <avahi-common/error.h>
#include <avahi-common/malloc.h>

#include <limits>
#include <utility>

#include "foundation/NSLog.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kHandOverTime(50);
// One poll deals with one or two messages; a state is told in a handful.
constexpr int kPollsPerCall = 32;
// Names that other services of this machine may have taken before we give up.
constexpr int kMostNames = 100;

/// The longest beginning of `name` that is text and fits into one label.
std::string labelOf(const std::string& name) {
  const std::string text = displayText(name);
  std::size_t length = std::min<std::size_t>(text.size(), AVAHI_LABEL_MAX - 1);
  length = validUTF8Length(std::string_view(text).substr(0, length));
  return text.substr(0, length);
}

std::string withoutLastDot(std::string type) {
  if (type.ends_with('.')) type.pop_back();
  return type;
}

}  // namespace

AvahiService::AvahiService(std::string domain, const std::string& type, const std::string& name,
                           std::int32_t port)
    : domain_(std::move(domain)), type_(withoutLastDot(type)), name_(labelOf(name)), port_(port) {}

void AvahiService::publish() {
  if (std::exchange(isPublished_, true)) return;
  if (port_ < 1 || port_ > std::numeric_limits<std::uint16_t>::max()) {
    return giveUp("no such port");
  }
  connect();
  if (hasGivenUp_) return;
  waitUntilHandedOver(kHandOverTime);
  if (!isHandedOver_ && !hasGivenUp_) {
    NSLog("The service \"%@\" is not announced on the network for now: Avahi is not ready", name_);
  }
}

void AvahiService::connect() {
  client_.reset();
  group_ = nullptr;
  isHandedOver_ = false;
  hasLostDaemon_ = false;
  clientState_ = AVAHI_CLIENT_CONNECTING;
  poll_.reset(avahi_simple_poll_new());
  if (!poll_) return giveUp("out of memory");
  int error = AVAHI_OK;
  client_.reset(avahi_client_new(avahi_simple_poll_get(poll_.get()), AVAHI_CLIENT_NO_FAIL,
                                 clientChanged, this, &error));
  if (!client_) giveUp(avahi_strerror(error));
}

// A daemon that has just started first finds out its own host name, for about a second.
void AvahiService::waitUntilHandedOver(std::chrono::milliseconds limit) {
  const Clock::time_point end = Clock::now() + limit;
  while (!isHandedOver_ && !hasGivenUp_ && !hasLostDaemon_ &&
         clientState_ != AVAHI_CLIENT_CONNECTING) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return;
    if (avahi_simple_poll_iterate(poll_.get(), static_cast<int>(left.count())) != 0) return;
  }
}

void AvahiService::processEvents() {
  if (!isPublished_ || hasGivenUp_) return;
  for (int i = 0; i < kPollsPerCall && !hasLostDaemon_ && !hasGivenUp_; ++i) {
    if (avahi_simple_poll_iterate(poll_.get(), 0) < 0) hasLostDaemon_ = true;
  }
  // Here rather than where it is told: a client cannot be freed while it calls back.
  if (hasLostDaemon_ && !hasGivenUp_) connect();
}

// Called within avahi_client_new() already, before that has returned.
void AvahiService::clientChanged(AvahiClient* client, AvahiClientState state, void* self) {
  auto& service = *static_cast<AvahiService*>(self);
  service.clientState_ = state;
  switch (state) {
    case AVAHI_CLIENT_S_RUNNING:
      return service.announce(client);
    case AVAHI_CLIENT_S_REGISTERING:
    case AVAHI_CLIENT_S_COLLISION:
      // The host takes another name; the daemon runs again when it has one.
      service.isHandedOver_ = false;
      if (service.group_) avahi_entry_group_reset(service.group_);
      return;
    case AVAHI_CLIENT_FAILURE:
      if (avahi_client_errno(client) == AVAHI_ERR_DISCONNECTED) {
        service.hasLostDaemon_ = true;
      } else {
        service.giveUp(avahi_strerror(avahi_client_errno(client)));
      }
      return;
    case AVAHI_CLIENT_CONNECTING:
      return;
  }
}

void AvahiService::groupChanged(AvahiEntryGroup* group, AvahiEntryGroupState state, void* self) {
  auto& service = *static_cast<AvahiService*>(self);
  AvahiClient* client = avahi_entry_group_get_client(group);
  if (state == AVAHI_ENTRY_GROUP_COLLISION) {
    service.takeAnotherName();
    avahi_entry_group_reset(group);
    service.announce(client);
  } else if (state == AVAHI_ENTRY_GROUP_FAILURE) {
    service.giveUp(avahi_strerror(avahi_client_errno(client)));
  }
}

void AvahiService::announce(AvahiClient* client) {
  if (!group_) group_ = avahi_entry_group_new(client, groupChanged, this);
  if (!group_) return giveUp(avahi_strerror(avahi_client_errno(client)));
  int error = AVAHI_ERR_COLLISION;
  for (int names = 0; names < kMostNames; ++names) {
    error = avahi_entry_group_add_service(
        group_, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, AvahiPublishFlags{}, name_.c_str(),
        type_.c_str(), domain_.empty() ? nullptr : domain_.c_str(), /*host=*/nullptr,
        static_cast<std::uint16_t>(port_), /*TXT records=*/nullptr);
    if (error != AVAHI_ERR_COLLISION) break;
    takeAnotherName();  // another service of this machine has it
  }
  if (error == AVAHI_OK) error = avahi_entry_group_commit(group_);
  if (error != AVAHI_OK) return giveUp(avahi_strerror(error));
  isHandedOver_ = true;
}

// "Name" becomes "Name #2", and that "Name #3".
void AvahiService::takeAnotherName() {
  const std::unique_ptr<char, FreedBy<avahi_free>> name(
      avahi_alternative_service_name(name_.c_str()));
  if (name) name_ = name.get();
}

void AvahiService::giveUp(std::string_view reason) {
  hasGivenUp_ = true;
  NSLog("The service \"%@\" is not announced on the network: %@", name_, reason);
}

}  // namespace vt
