// Any bytes for a manifest, once with a checksum put behind them so that more than that is looked
// at: parsing gives an error or what prints as the same bytes.
#include <fmt/format.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "metadata/store/FileWriter.h"
#include "metadata/store/Manifest.h"

namespace {

void parse(std::string_view text) {
  const auto manifest = vt::parseManifest(text, "manifest");
  if (manifest && vt::printManifest(*manifest) != text) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  parse(text);
  parse(fmt::format("{}checksum {:016x}\n", text, vt::checksumOf(text)));
  return 0;
}
