#include "vistaro/ProgressLine.h"

namespace vt::tool {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kInterval{100};
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

std::string ProgressLine::update(Clock::time_point now, FunctionRef<std::string()> text) {
  if (now - start_ < kPatience || (isShown_ && now - shownAt_ < kInterval)) return {};
  isShown_ = true;
  shownAt_ = now;
  return kEraseLine + text();
}

std::string ProgressLine::remove() {
  if (!isShown_) return {};
  isShown_ = false;
  return kEraseLine;
}

}  // namespace vt::tool
