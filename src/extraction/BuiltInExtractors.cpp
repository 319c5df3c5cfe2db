#include "extraction/BuiltInExtractors.h"

#include <algorithm>
#include <iterator>

#include "extraction/documents/DocumentExtractors.h"
#include "extraction/media/MediaExtractors.h"

namespace vt {

std::vector<std::unique_ptr<Extractor>> confinedExtractors(const ContentTypes& types) {
  std::vector<std::unique_ptr<Extractor>> extractors = mediaExtractors(types, textOfHtml);
  // Behind those of media, since a picture may be XML.
  std::ranges::move(documentExtractors(types), std::back_inserter(extractors));
  return extractors;
}

}  // namespace vt
