#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text of books, and what they say of themselves.
class EpubExtractor final : public Extractor {
 public:
  explicit EpubExtractor(const ContentTypes& types) : types_(types, {"org.idpf.epub-container"}) {}

  std::string_view name() const override { return "epub"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
