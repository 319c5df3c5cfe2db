#include <cstddef>
#include <cstdint>
#include <string_view>

#include "foundation/UTF8.h"
#include "platform/linux/SambaConfiguration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const vt::SambaConfiguration configuration = vt::parseSambaConfiguration(text);
  for (const vt::SharedFolder& share : configuration.shares.folders) {
    if (share.name.empty() || !vt::isValidUTF8(share.name + share.path)) __builtin_trap();
    if (share.path.size() < 2 || share.path.front() != '/') __builtin_trap();
    if (share.path != vt::canonicalText(share.path)) __builtin_trap();
    if (!configuration.sectionNames.contains(vt::sambaName(share.name))) __builtin_trap();
  }
  return 0;
}
