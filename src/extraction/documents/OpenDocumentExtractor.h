#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text and properties of OpenDocument files, flat ones too, and of their forerunners.
class OpenDocumentExtractor final : public Extractor {
 public:
  explicit OpenDocumentExtractor(const ContentTypes& types)
      : types_(types,
               {"org.oasis-open.opendocument", "org.openoffice.text", "org.openoffice.spreadsheet",
                "org.openoffice.presentation", "org.openoffice.graphics"}) {}

  std::string_view name() const override { return "opendocument"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
