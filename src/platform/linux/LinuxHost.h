#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Host.h"

namespace vt {

/// The names of this machine, or of the one whose configuration lies under a root prefix.
class LinuxHost final : public Host {
 public:
  /// With a prefix the files "etc/hostname" and "etc/hosts" under it speak, and the resolver, which
  /// only knows this machine, is not asked. A prefix without "etc/hostname" has this machine's
  /// name.
  explicit LinuxHost(std::string rootPrefix = "") : rootPrefix_(std::move(rootPrefix)) {}

  std::optional<std::string> name() const override;

  /// name(); then the names that "etc/hosts" gives to it or to a loopback address; then the
  /// resolver's canonical name for it. Each once, case ignored. Names of the form "ip6-…", which
  /// stand for an address rather than a host, are left out. May wait for the resolver.
  std::vector<std::string> names() const override;

 private:
  std::string rootPrefix_;
};

}  // namespace vt
