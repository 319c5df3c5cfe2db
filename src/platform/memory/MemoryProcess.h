#pragma once

#include "platform/Process.h"

namespace vt {

/// A process whose clock stands until it is moved, and that counts what it is asked to do.
class MemoryProcess final : public Process {
 public:
  Date now() const override { return now_; }
  void setNow(Date now) { now_ = now; }

  double appKitVersionNumber() const override { return appKitVersionNumber_; }
  void setAppKitVersionNumber(double version) { appKitVersionNumber_ = version; }

  void loadApplication() override { ++loadApplicationCalls_; }
  int loadApplicationCalls() const { return loadApplicationCalls_; }

  std::int32_t processIdentifier() const override { return processIdentifier_; }
  void setProcessIdentifier(std::int32_t identifier) { processIdentifier_ = identifier; }

  void seedRandom() override { ++seedRandomCalls_; }
  int seedRandomCalls() const { return seedRandomCalls_; }

 private:
  Date now_ = kReferenceDate;
  double appKitVersionNumber_ = 1038.0;
  std::int32_t processIdentifier_ = 4711;
  int loadApplicationCalls_ = 0;
  int seedRandomCalls_ = 0;
};

}  // namespace vt
