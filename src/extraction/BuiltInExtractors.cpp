#include "extraction/BuiltInExtractors.h"

#include "extraction/documents/DocumentExtractors.h"

namespace vt {

std::vector<std::unique_ptr<Extractor>> confinedExtractors(const ContentTypes& types) {
  return documentExtractors(types);
}

}  // namespace vt
