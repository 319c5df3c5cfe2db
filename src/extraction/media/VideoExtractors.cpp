#include <time.h>

#include "extraction/media/MediaExtractors.h"
#include "extraction/media/VideoExtractor.h"

namespace vt {

std::vector<std::unique_ptr<Extractor>> videoExtractors(const ContentTypes& types) {
  ::tzset();  // dates may have no zone
  std::vector<std::unique_ptr<Extractor>> extractors;
  extractors.push_back(std::make_unique<VideoExtractor>(types));
  return extractors;
}

}  // namespace vt
