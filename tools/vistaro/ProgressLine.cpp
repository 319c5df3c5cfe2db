#include "vistaro/ProgressLine.h"

#include <fmt/format.h>

namespace vt::tool {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kInterval{100};
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

std::string ProgressLine::update(std::uint64_t folders, std::uint64_t entries,
                                 Clock::time_point now) {
  if (now - start_ < kPatience || (isShown_ && now - shownAt_ < kInterval)) return {};
  isShown_ = true;
  shownAt_ = now;
  return fmt::format("{}searching: {} folders, {} files", kEraseLine, folders, entries);
}

std::string ProgressLine::remove() {
  if (!isShown_) return {};
  isShown_ = false;
  return kEraseLine;
}

}  // namespace vt::tool
