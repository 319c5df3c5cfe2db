#include "extraction/media/MediaExtractors.h"

#include <time.h>

#include <utility>

#ifdef VT_WITH_ARCHIVES
#include "extraction/media/ArchiveExtractor.h"
#endif
#ifdef VT_WITH_PICTURES
#include "extraction/media/PictureExtractor.h"
#endif
#ifdef VT_WITH_SOUND
#include "extraction/media/SoundExtractor.h"
#endif

namespace vt {

std::vector<std::unique_ptr<Extractor>> mediaExtractors(const ContentTypes& types,
                                                        [[maybe_unused]] HtmlText htmlText) {
  ::tzset();  // dates of cameras have no zone
  std::vector<std::unique_ptr<Extractor>> extractors;
#ifdef VT_WITH_MAIL
  extractors.push_back(std::make_unique<MailExtractor>(types, std::move(htmlText)));
#endif
#ifdef VT_WITH_PICTURES
  extractors.push_back(std::make_unique<PictureExtractor>(types));
#endif
#ifdef VT_WITH_SOUND
  extractors.push_back(std::make_unique<SoundExtractor>(types));
#endif
#ifdef VT_WITH_ARCHIVES
  extractors.push_back(std::make_unique<ArchiveExtractor>(types));
#endif
  return extractors;
}

}  // namespace vt
