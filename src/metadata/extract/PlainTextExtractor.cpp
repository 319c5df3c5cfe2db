#include "metadata/extract/PlainTextExtractor.h"

#include <utility>

#include "metadata/live/PlainTextReader.h"

namespace vt {

PlainTextExtractor::PlainTextExtractor(const ContentTypes& types)
    : types_(types), text_(types.find("public.text")) {}

bool PlainTextExtractor::takes(ContentTypeId type) const {
  return text_ && types_.conforms(type, *text_);
}

Result<Extraction, ExtractionFailure> PlainTextExtractor::extract(int file,
                                                                  ContentTypeId /*type*/) {
  Extraction extraction;
  extraction.text = plainTextOf(file);
  return extraction;
}

}  // namespace vt
