#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/linux/UsershareFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const auto share = vt::parseUsershareFile("mine", text);
  if (share && vt::sambaName(share->name) != "mine") __builtin_trap();
  return 0;
}
