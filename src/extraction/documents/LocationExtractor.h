#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// Where files that are but a link to the Internet lead to.
class LocationExtractor final : public Extractor {
 public:
  explicit LocationExtractor(const ContentTypes& types)
      : types_(types, {"com.apple.internet-location", "com.microsoft.internet-shortcut"}) {}

  std::string_view name() const override { return "location"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
