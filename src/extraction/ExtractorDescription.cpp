#include "extraction/ExtractorDescription.h"

#include "extraction/ByteReader.h"

namespace vt {

std::string descriptionBytes(std::span<const std::unique_ptr<Extractor>> extractors,
                             std::size_t typeCount) {
  std::string bytes;
  for (const std::unique_ptr<Extractor>& extractor : extractors) {
    appendNumber(bytes, static_cast<std::uint8_t>(extractor->name().size()));
    bytes += extractor->name();
    appendNumber(bytes, extractor->version());
    for (std::size_t type = 0; type < typeCount; ++type) {
      bytes += extractor->takes(static_cast<ContentTypeId>(type)) ? 'y' : 'n';
    }
  }
  return bytes;
}

std::optional<std::vector<ExtractorDescription>> descriptionsIn(std::string_view bytes,
                                                                std::size_t typeCount) {
  std::vector<ExtractorDescription> descriptions;
  ByteReader reader(bytes);
  while (!reader.rest().empty()) {
    const auto name = reader.sized<std::uint8_t>();
    const auto version = reader.number<std::uint32_t>();
    const auto types = reader.take(typeCount);
    if (!name || !version || !types) return std::nullopt;
    ExtractorDescription& described = descriptions.emplace_back();
    described.name = *name;
    described.version = *version;
    for (const char taken : *types) described.types.push_back(taken == 'y');
  }
  return descriptions;
}

}  // namespace vt
