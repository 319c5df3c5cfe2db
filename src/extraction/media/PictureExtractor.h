#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// What stands in pictures beside their pixels: their sizes, and what cameras (EXIF), agencies
/// (IPTC) and programs (XMP) have written into them. Looks at no pixels.
class PictureExtractor final : public Extractor {
 public:
  explicit PictureExtractor(const ContentTypes& types);

  std::string_view name() const override { return "picture"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
