#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// What the containers of videos say: their streams, length and titles. Also of sound in containers
/// that have no tags of the common sorts. Decodes nothing.
class VideoExtractor final : public Extractor {
 public:
  explicit VideoExtractor(const ContentTypes& types);

  std::string_view name() const override { return "video"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
