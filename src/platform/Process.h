#pragma once

#include <cstdint>

#include "foundation/Date.h"

namespace vt {

/// What the library asks of the process and the system that it runs in.
class Process {
 public:
  virtual ~Process() = default;

  virtual Date now() const = 0;
  /// `NSAppKitVersionNumber`: the version of the application environment. Above 949 passwords are
  /// checked through OpenDirectory, else through Directory Services.
  virtual double appKitVersionNumber() const = 0;
  /// `NSApplicationLoad`: makes sure the windowing application environment is there.
  virtual void loadApplication() = 0;
  /// `processIdentifier`
  virtual std::int32_t processIdentifier() const = 0;
  /// `srandomdev`: seeds the C library's random() from the system.
  virtual void seedRandom() = 0;
};

}  // namespace vt
