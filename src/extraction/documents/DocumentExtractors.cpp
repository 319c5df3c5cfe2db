#include "extraction/documents/DocumentExtractors.h"

#ifdef VT_WITH_HTML
#include "extraction/documents/HtmlExtractor.h"
#endif

namespace vt {

std::vector<std::unique_ptr<Extractor>> documentExtractors(const ContentTypes& types) {
  std::vector<std::unique_ptr<Extractor>> extractors;
#ifdef VT_WITH_HTML
  extractors.push_back(std::make_unique<HtmlExtractor>(types));
#endif
  return extractors;
}

}  // namespace vt
