#include <cstddef>
#include <cstdint>
#include <string_view>

#include "metadata/catalogue/AttributeBytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view given(reinterpret_cast<const char*>(bytes), size);
  const vt::Value value = vt::attributeValue(given);
  // What is a value has one form.
  if (!value.isNull() && vt::attributeBytes(value) != given) __builtin_trap();
  return 0;
}
