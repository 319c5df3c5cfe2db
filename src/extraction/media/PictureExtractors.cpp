#include <time.h>

#include "extraction/media/MediaExtractors.h"
#include "extraction/media/PictureExtractor.h"

namespace vt {

std::vector<std::unique_ptr<Extractor>> pictureExtractors(const ContentTypes& types) {
  ::tzset();  // dates of cameras have no zone
  std::vector<std::unique_ptr<Extractor>> extractors;
  extractors.push_back(std::make_unique<PictureExtractor>(types));
  return extractors;
}

}  // namespace vt
