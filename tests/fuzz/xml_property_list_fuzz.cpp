// Any bytes are a tree or an error that lies inside them; nothing else may happen.
#include <cstdlib>

#include "foundation/XMLPropertyListReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Small limits, so that the search spends its time on inputs and not on freeing trees.
  const auto result = vt::readXMLPropertyList({reinterpret_cast<const char*>(data), size},
                                              {.depth = 64, .bytes = 1 << 20, .objects = 10'000});
  if (!result && result.error().offset > size) std::abort();
  return 0;
}
