#include "platform/Platform.h"

namespace vt {

Platform::~Platform() {
  while (!order_.empty()) {
    const std::type_index last = order_.back();
    order_.pop_back();
    const std::shared_ptr<void> object = std::exchange(shared_[last], nullptr);
  }
}

Platform*& Platform::installed() {
  static Platform* platform = nullptr;
  return platform;
}

Platform& Platform::current() {
  assert(installed() && "no platform is installed");
  return *installed();
}

PlatformScope::PlatformScope(std::shared_ptr<Platform> platform)
    : platform_(std::move(platform)),
      previous_(std::exchange(Platform::installed(), platform_.get())) {}

PlatformScope::~PlatformScope() { Platform::installed() = previous_; }

}  // namespace vt
