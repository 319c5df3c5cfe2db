#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text of PDF documents, and what they say of themselves.
class PdfExtractor final : public Extractor {
 public:
  explicit PdfExtractor(const ContentTypes& types) : types_(types, {"com.adobe.pdf"}) {}

  std::string_view name() const override { return "pdf"; }
  std::uint32_t version() const override { return 1; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
