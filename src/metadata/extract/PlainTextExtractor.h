#pragma once

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// The text of plain-text and source files: exactly what a walk of the files reads of them.
class PlainTextExtractor final : public Extractor {
 public:
  /// Borrows `types`.
  explicit PlainTextExtractor(const ContentTypes& types);

  std::string_view name() const override { return "text"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override;
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  const ContentTypes& types_;
  std::optional<ContentTypeId> text_;  // what all plain text conforms to
};

}  // namespace vt
