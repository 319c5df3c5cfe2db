// What comes out of the pipe of a process that looked into a file.

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "extraction/ExtractionBytes.h"
#include "extraction/ExtractorDescription.h"
#include "foundation/UTF8.h"
#include "metadata/live/LiveAttribute.h"
#include "support/Places.h"

namespace {

const vt::query::AttributeSchema& schema() {
  static const auto* const kSchema = [] {
    std::ifstream file(vt::resourcePath("attributes.tsv"), std::ios::binary);
    const std::string table{std::istreambuf_iterator<char>(file), {}};
    return new vt::query::AttributeSchema(vt::query::AttributeSchema::parse(table).value());
  }();
  return *kSchema;
}

void checkDescriptions(std::string_view bytes) {
  constexpr std::size_t kTypes = 3;
  const auto descriptions = vt::descriptionsIn(bytes, kTypes);
  if (!descriptions) return;
  for (const vt::ExtractorDescription& each : *descriptions) {
    if (each.types.size() != kTypes) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view given(reinterpret_cast<const char*>(bytes), size);
  checkDescriptions(given);
  const auto found = vt::extractionIn(given, schema());
  if (!found || !*found) return 0;
  const vt::Extraction& extraction = **found;
  if (extraction.text && !vt::isValidUTF8(*extraction.text)) __builtin_trap();
  for (const auto& [name, value] : extraction.attributes) {
    if (!schema().find(name) || vt::liveAttributeNamed(name)) __builtin_trap();
  }
  // What is let through is let through again.
  const auto again = vt::extractionIn(vt::extractionBytes(*found), schema());
  if (!again || !*again || (*again)->text != extraction.text ||
      (*again)->attributes != extraction.attributes) {
    __builtin_trap();
  }
  return 0;
}
