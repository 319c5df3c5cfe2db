// The decoder over OpenSSL's filter never gives more than the text can hold, and what its encoder
// writes of the input reads back.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "util/HexDump.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const vt::Data input(std::string_view(reinterpret_cast<const char*>(bytes), size));
  for (const bool newLines : {true, false}) {
    if (vt::decodeBase64WithNewLines(input, newLines).size() > (size + 3) / 4 * 3) __builtin_trap();
    const vt::Data text(vt::encodeBase64WithNewlines(input, newLines));
    if (vt::decodeBase64WithNewLines(text, newLines) != input) __builtin_trap();
  }
  return 0;
}
