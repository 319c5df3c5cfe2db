#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text of XML documents without their markup, and the title that many of them have.
class XmlExtractor final : public Extractor {
 public:
  explicit XmlExtractor(const ContentTypes& types) : types_(types, {"public.xml"}) {}

  std::string_view name() const override { return "xml"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
