#include <cstddef>
#include <cstdint>
#include <span>

#include "metadata/rights/AccessControlList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto list = vt::AccessControlList::parse(std::span(bytes, size));
  if (list) {
    // Permission for all wanted things is permission for each of them.
    const vt::Credentials who(7, 70, {71, 72});
    const bool both = list->grants(who, 70, vt::kMayRead | vt::kMaySearch);
    if (both && !list->grants(who, 70, vt::kMayRead)) __builtin_trap();
  } else if (list.error().offset > size) {
    __builtin_trap();
  }
  return 0;
}
