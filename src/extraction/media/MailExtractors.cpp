#include <time.h>

#include <utility>

#include "extraction/media/MediaExtractors.h"

namespace vt {

std::vector<std::unique_ptr<Extractor>> mailExtractors(const ContentTypes& types,
                                                       HtmlText htmlText) {
  ::tzset();  // dates may have no zone
  std::vector<std::unique_ptr<Extractor>> extractors;
  extractors.push_back(std::make_unique<MailExtractor>(types, std::move(htmlText)));
  return extractors;
}

}  // namespace vt
