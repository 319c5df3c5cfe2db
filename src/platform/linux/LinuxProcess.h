#pragma once

#include "platform/Process.h"

namespace vt {

/// The running process and the clock of the machine.
class LinuxProcess final : public Process {
 public:
  Date now() const override;
  /// Newer than 949, so that passwords are checked through OpenDirectory.
  double appKitVersionNumber() const override { return 1038.0; }
  /// Nothing to load: there is no windowing environment.
  void loadApplication() override {}
  std::int32_t processIdentifier() const override;
  void seedRandom() override;
};

}  // namespace vt
