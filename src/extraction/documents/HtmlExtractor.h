#pragma once

#include <memory>
#include <vector>

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text of HTML pages, and what their heads say of them.
class HtmlExtractor final : public Extractor {
 public:
  explicit HtmlExtractor(const ContentTypes& types)
      : types_(types, {"public.html", "public.xhtml"}) {}

  std::string_view name() const override { return "html"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
};

/// The one for HTML. Borrows `types`.
std::vector<std::unique_ptr<Extractor>> htmlExtractors(const ContentTypes& types);

}  // namespace vt
