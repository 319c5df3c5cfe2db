#include <cstddef>
#include <cstdint>
#include <string_view>

#include "foundation/UTF8.h"
#include "platform/linux/NetatalkConfiguration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  vt::NetatalkConfiguration configuration;
  // What was read before a mistake must hold together too.
  (void)configuration.read(text).hasValue();
  for (const vt::SharedFolder& volume : configuration.volumes().folders) {
    if (volume.name.empty() || !vt::isValidUTF8(volume.name + volume.path)) __builtin_trap();
    if (volume.path.size() < 2 || volume.path.front() != '/') __builtin_trap();
    if (volume.path != vt::canonicalText(volume.path)) __builtin_trap();
  }
  return 0;
}
