#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text and properties of Office Open XML documents, spreadsheets and presentations.
class OpenXmlExtractor final : public Extractor {
 public:
  explicit OpenXmlExtractor(const ContentTypes& types)
      : types_(types, {"org.openxmlformats.openxml"}) {}

  std::string_view name() const override { return "openxml"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
