#pragma once

#include <memory>

#include "platform/ServiceDiscovery.h"

namespace vt {

/// Service discovery by the Avahi daemon of this machine. Where the library was built without
/// Avahi, services can be made and are never announced.
///
/// Publishing hands the service over before it returns, within 50 ms, and never waits for the
/// network. Without D-Bus it gives up, with a log line; without a daemon on D-Bus, or when the
/// daemon goes away, processEvents() announces the service as soon as there is one. Only a daemon
/// that is there but does not answer holds the caller up, for as long as D-Bus waits: 25 seconds.
/// A name longer than the 63 bytes that fit is cut; one that is taken gets a number.
///
/// Of a service, the type ends without its dot on the network, and the port is 1 to 65535: another
/// one is logged and not announced. One thread at a time.
std::shared_ptr<ServiceDiscovery> linuxServiceDiscovery();

}  // namespace vt
