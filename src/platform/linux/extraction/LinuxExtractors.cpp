#include "platform/linux/extraction/LinuxExtractors.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "metadata/extract/PlainTextExtractor.h"
#include "metadata/query/AttributeSchema.h"
#include "platform/linux/extraction/ConfinedExtractor.h"

namespace vt {

std::shared_ptr<ExtractionWorkers> extractionWorkers(const Resources& resources,
                                                     const ContentTypes& types,
                                                     const std::string& program) {
  const auto typeTable = resources.resource("types", "tsv");
  auto schema = query::AttributeSchema::parse(resources.resource("attributes", "tsv").value_or(""));
  if (!typeTable || !schema) return nullptr;
  return std::make_shared<ExtractionWorkers>(
      program.empty() ? VT_EXTRACTION_WORKER : program, *typeTable, types.size(),
      std::make_shared<const query::AttributeSchema>(std::move(schema).value()));
}

Extractors linuxExtractors(const ContentTypes& types,
                           const std::shared_ptr<ExtractionWorkers>& workers) {
  std::vector<std::unique_ptr<Extractor>> extractors;
  if (workers) {
    std::uint32_t place = 0;
    for (ExtractorDescription& description : workers->describe()) {
      extractors.push_back(
          std::make_unique<ConfinedExtractor>(workers, place++, std::move(description)));
    }
  }
  extractors.push_back(std::make_unique<PlainTextExtractor>(types));
  return {types, std::move(extractors)};
}

}  // namespace vt
