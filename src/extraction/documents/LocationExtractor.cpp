#include "extraction/documents/LocationExtractor.h"

#include <string>

#include "extraction/FoundAttributes.h"
#include "extraction/ReadFile.h"
#include "foundation/Data.h"
#include "foundation/Dictionary.h"
#include "foundation/PropertyList.h"

namespace vt {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 20;

/// What the line "URL=" of a shortcut says; "" when there is none.
std::string_view addressInShortcut(std::string_view text) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    if (line.starts_with("URL=")) return line.substr(4);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return {};
}

std::string addressIn(const std::string& bytes) {
  if (bytes.starts_with("[")) return std::string(addressInShortcut(bytes));
  const auto tree = readPropertyList(bytes);
  const std::shared_ptr<Dictionary> entries = tree ? tree->dictionary() : nullptr;
  const Value* const url = entries ? entries->find("URL") : nullptr;
  const auto* const text = url ? url->get<std::string>() : nullptr;
  return text ? *text : std::string();
}

}  // namespace

Result<Extraction, ExtractionFailure> LocationExtractor::extract(int file, ContentTypeId /*type*/) {
  const Result<std::string, ExtractionFailure> bytes = readWholeFile(file, kMostBytes);
  if (!bytes) return bytes.error();
  Extraction extraction;
  FoundAttributes(extraction).setText("kMDItemURL", addressIn(*bytes));
  if (extraction.attributes.empty()) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed, "it names no address"};
  }
  return extraction;
}

}  // namespace vt
