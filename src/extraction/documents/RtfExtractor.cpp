#include "extraction/documents/RtfExtractor.h"

#include <string>

#include "extraction/ReadFile.h"
#include "extraction/documents/RtfReader.h"

namespace vt {
namespace {

// Pictures are written in it as digits.
constexpr std::size_t kMostBytes = std::size_t{256} << 20;

}  // namespace

Result<Extraction, ExtractionFailure> RtfExtractor::extract(int file, ContentTypeId /*type*/) {
  const Result<std::string, ExtractionFailure> bytes = readFileStart(file, kMostBytes);
  if (!bytes) return bytes.error();
  Extraction extraction;
  if (!RtfReader(extraction).read(*bytes)) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed, "it is no Rich Text"};
  }
  return extraction;
}

}  // namespace vt
