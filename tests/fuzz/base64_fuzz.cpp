// What the self-contained decoder takes, its encoder gives back in its own form.

#include <cstddef>
#include <cstdint>
#include <string>

#include "util/Base64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  const auto decoded = vt::dataWithBase64EncodedString(text);
  if (!decoded) return 0;
  if (decoded->size() > (size + 3) / 4 * 3) __builtin_trap();
  if (vt::dataWithBase64EncodedString(vt::base64Encoding(*decoded)) != decoded) __builtin_trap();
  return 0;
}
