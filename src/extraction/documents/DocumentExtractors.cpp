#include "extraction/documents/DocumentExtractors.h"

#include "extraction/documents/LocationExtractor.h"
#include "extraction/documents/RtfExtractor.h"
#include "extraction/documents/XmlExtractor.h"
#ifdef VT_WITH_PACKAGES
#include "extraction/documents/OpenDocumentExtractor.h"
#include "extraction/documents/OpenXmlExtractor.h"
#ifdef VT_WITH_BOOKS
#include "extraction/documents/EpubExtractor.h"
#endif
#endif

namespace vt {

std::vector<std::unique_ptr<Extractor>> documentExtractors(const ContentTypes& types) {
  std::vector<std::unique_ptr<Extractor>> extractors;
#ifdef VT_WITH_PACKAGES
  extractors.push_back(std::make_unique<OpenXmlExtractor>(types));
  extractors.push_back(std::make_unique<OpenDocumentExtractor>(types));
#ifdef VT_WITH_BOOKS
  extractors.push_back(std::make_unique<EpubExtractor>(types));
#endif
#endif
  extractors.push_back(std::make_unique<RtfExtractor>(types));
  extractors.push_back(std::make_unique<LocationExtractor>(types));
  // Last, since much is XML that others know more of.
  extractors.push_back(std::make_unique<XmlExtractor>(types));
  return extractors;
}

}  // namespace vt
