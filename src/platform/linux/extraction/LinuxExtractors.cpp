#include "platform/linux/extraction/LinuxExtractors.h"

#include <utility>
#include <vector>

#include "metadata/extract/PlainTextExtractor.h"
#include "metadata/query/AttributeSchema.h"
#include "platform/linux/extraction/ConfinedExtractor.h"

namespace vt {

std::vector<std::string> extractionPrograms() {
  std::vector<std::string> programs;
  // Documents last, since a picture may be XML.
  for (const char* kind : {"pictures", "mail", "media", "video", "pdf", "html", "documents"}) {
    programs.push_back(std::string(VT_WORKER_PROGRAMS "/vistaro-extract-") + kind);
  }
  return programs;
}

std::shared_ptr<ExtractionWorkers> extractionWorkers(const Resources& resources,
                                                     const ContentTypes& types,
                                                     std::vector<std::string> programs) {
  const auto typeTable = resources.resource("types", "tsv");
  auto schema = query::AttributeSchema::parse(resources.resource("attributes", "tsv").value_or(""));
  if (!typeTable || !schema) return nullptr;
  return std::make_shared<ExtractionWorkers>(
      std::move(programs), *typeTable, types.size(),
      std::make_shared<const query::AttributeSchema>(std::move(schema).value()));
}

Extractors linuxExtractors(const ContentTypes& types,
                           const std::shared_ptr<ExtractionWorkers>& workers) {
  std::vector<std::unique_ptr<Extractor>> extractors;
  if (workers) {
    for (ExtractionWorkers::Described& described : workers->describe()) {
      extractors.push_back(std::make_unique<ConfinedExtractor>(workers, std::move(described)));
    }
  }
  extractors.push_back(std::make_unique<PlainTextExtractor>(types));
  return {types, std::move(extractors)};
}

}  // namespace vt
