#include "extraction/media/MediaExtractors.h"

#include <time.h>

#ifdef VT_WITH_ARCHIVES
#include "extraction/media/ArchiveExtractor.h"
#endif
#ifdef VT_WITH_SOUND
#include "extraction/media/SoundExtractor.h"
#endif

namespace vt {

std::vector<std::unique_ptr<Extractor>> mediaExtractors(const ContentTypes& types) {
  ::tzset();  // dates may have no zone
  std::vector<std::unique_ptr<Extractor>> extractors;
#ifdef VT_WITH_SOUND
  extractors.push_back(std::make_unique<SoundExtractor>(types));
#endif
#ifdef VT_WITH_ARCHIVES
  extractors.push_back(std::make_unique<ArchiveExtractor>(types));
#endif
  return extractors;
}

}  // namespace vt
