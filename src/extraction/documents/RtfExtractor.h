#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text of Rich Text files, and what their heads say of them.
class RtfExtractor final : public Extractor {
 public:
  explicit RtfExtractor(const ContentTypes& types) : types_(types, {"public.rtf"}) {}

  std::string_view name() const override { return "rtf"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
