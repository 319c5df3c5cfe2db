// Whatever any reader takes and the writer writes reads back as an equal tree, and is then written
// as the same bytes again.
#include <cstdlib>

#include "foundation/PropertyList.h"
#include "foundation/XMLPropertyListReader.h"
#include "foundation/XMLPropertyListWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const vt::PropertyListLimits limits{.depth = 64, .bytes = 1 << 20, .objects = 10'000};
  const auto tree = vt::readPropertyList({reinterpret_cast<const char*>(data), size}, limits);
  if (!tree) return 0;
  const auto xml = vt::writeXMLPropertyList(*tree, limits);
  // Refusals are in order: text that XML cannot hold, years past 9999, more bytes than before.
  if (!xml) return 0;
  const auto again = vt::readXMLPropertyList(*xml, limits);
  if (!again) std::abort();
  const auto xmlAgain = vt::writeXMLPropertyList(*again, limits);
  // Not the trees: a date loses its fraction on the way.
  if (!xmlAgain || *xmlAgain != *xml) std::abort();
  return 0;
}
