// Titles, tags and the like as they stand in files.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "extraction/FoundAttributes.h"
#include "foundation/UTF8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view given(reinterpret_cast<const char*>(bytes), size);
  const std::string text = vt::asUtf8(given);
  if (!vt::isValidUTF8(text)) __builtin_trap();
  if (vt::isValidUTF8(given) && text != given) __builtin_trap();
  const std::string tidied = vt::tidiedText(given);
  if (!vt::isValidUTF8(tidied) || tidied.size() > vt::kMostAttributeText) __builtin_trap();
  if (tidied.starts_with(' ') || tidied.ends_with(' ')) __builtin_trap();
  if (tidied.find("  ") != std::string::npos || vt::tidiedText(tidied) != tidied) __builtin_trap();
  return 0;
}
