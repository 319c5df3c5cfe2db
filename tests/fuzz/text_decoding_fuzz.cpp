// Text files in whatever character set.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/TextDecoding.h"
#include "foundation/UTF8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text = vt::decodePlainText({reinterpret_cast<const char*>(bytes), size});
  if (vt::validUTF8Length(text) != text.size()) __builtin_trap();
  // A character of two bytes in UTF-16 takes three at most; a bad byte becomes three.
  if (text.size() > 3 * size) __builtin_trap();
  return 0;
}
