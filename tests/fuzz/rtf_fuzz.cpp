#include <cstddef>
#include <cstdint>
#include <string_view>

#include "extraction/documents/RtfReader.h"
#include "foundation/UTF8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  vt::Extraction extraction;
  const std::string_view given(reinterpret_cast<const char*>(bytes), size);
  const bool isRtf = vt::RtfReader(extraction).read(given);
  if (isRtf != given.starts_with("{\\rtf")) __builtin_trap();
  if (isRtf && !vt::isValidUTF8(*extraction.text)) __builtin_trap();
  return 0;
}
