#pragma once

#include <memory>
#include <vector>

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace poppler {
class document;  // NOLINT(readability-identifier-naming): the library's
}  // namespace poppler

namespace vt {

/// The text of PDF documents, and what they say of themselves.
class PdfExtractor final : public Extractor {
 public:
  /// To be made before the worker's walls stand, since tables of characters are looked for.
  explicit PdfExtractor(const ContentTypes& types);
  PdfExtractor(const PdfExtractor&) = delete;
  PdfExtractor& operator=(const PdfExtractor&) = delete;
  ~PdfExtractor() override;

  std::string_view name() const override { return "pdf"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
  // With the last document poppler forgets the tables that it has found, which takes it longer to
  // find than most documents take to read.
  std::unique_ptr<poppler::document> keptOpen_;
};

/// The one for PDF. Borrows `types`.
std::vector<std::unique_ptr<Extractor>> pdfExtractors(const ContentTypes& types);

}  // namespace vt
