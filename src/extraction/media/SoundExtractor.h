#pragma once

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// What the tags of sound files say, and how their sound is stored. The words of a song are its
/// text.
class SoundExtractor final : public Extractor {
 public:
  explicit SoundExtractor(const ContentTypes& types);

  std::string_view name() const override { return "sound"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

}  // namespace vt
