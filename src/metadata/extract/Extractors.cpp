#include "metadata/extract/Extractors.h"

#include <algorithm>
#include <utility>

#include "metadata/extract/PlainTextExtractor.h"

namespace vt {

Extractors::Extractors(const ContentTypes& types,
                       std::vector<std::unique_ptr<Extractor>> extractors)
    : extractors_(std::move(extractors)), byType_(types.size(), nullptr) {
  for (std::size_t type = 0; type < types.size(); ++type) {
    const auto found = std::ranges::find_if(extractors_, [&](const auto& extractor) {
      return extractor->takes(static_cast<ContentTypeId>(type));
    });
    if (found != extractors_.end()) byType_[type] = found->get();
  }
}

const Extractor* Extractors::named(std::string_view name, std::uint32_t version) const {
  const auto found = std::ranges::find_if(extractors_, [&](const auto& extractor) {
    return extractor->name() == name && extractor->version() == version;
  });
  return found == extractors_.end() ? nullptr : found->get();
}

Extractors builtInExtractors(const ContentTypes& types) {
  std::vector<std::unique_ptr<Extractor>> extractors;
  extractors.push_back(std::make_unique<PlainTextExtractor>(types));
  return {types, std::move(extractors)};
}

}  // namespace vt
