#include <cstddef>
#include <cstdint>
#include <string_view>

#include "metadata/types/ContentTypes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  if (const auto types = vt::ContentTypes::parse(text)) {
    // Names are bytes, so the same input serves as one.
    if ((*types)[types->typeOfFile(text)].tree.empty()) __builtin_trap();
    if ((*types)[types->typeOfFolder(text)].tree.empty()) __builtin_trap();
  }
  return 0;
}
