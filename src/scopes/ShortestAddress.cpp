#include "scopes/ShortestAddress.h"

#include <algorithm>

#include "scopes/VTSearchFolder.h"

namespace vt {
namespace {

// Bytes that continue a character of UTF-8 count for nothing.
std::ptrdiff_t characterCount(const std::string& text) {
  return std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; });
}

}  // namespace

std::optional<std::string> shortestAddress(
    const std::shared_ptr<ObjectArray<VTSearchFolder>>& folders,
    FunctionRef<std::optional<std::string>(const VTSearchFolder&)> addressIn) {
  std::optional<std::string> shortest;
  if (!folders) return shortest;
  for (const std::shared_ptr<VTSearchFolder>& folder : *folders) {
    std::optional<std::string> address = addressIn(*folder);
    if (!address) continue;
    if (!shortest || characterCount(*address) < characterCount(*shortest)) {
      shortest = std::move(address);
    }
  }
  return shortest;
}

}  // namespace vt
