#include "extraction/documents/HtmlExtractor.h"

#include "extraction/ReadFile.h"
#include "extraction/documents/Charset.h"
#include "extraction/documents/HtmlText.h"

namespace vt {
namespace {

// A parsed page takes many times its size. What is longer was written by a program.
constexpr std::size_t kMostBytes = std::size_t{16} << 20;

}  // namespace

Result<Extraction, ExtractionFailure> HtmlExtractor::extract(int file, ContentTypeId /*type*/) {
  const Result<std::string, ExtractionFailure> bytes = readFileStart(file, kMostBytes);
  if (!bytes) return bytes.error();
  Extraction extraction;
  readHtml(decodedText(*bytes, charsetNamedIn(*bytes)), extraction);
  return extraction;
}

std::vector<std::unique_ptr<Extractor>> htmlExtractors(const ContentTypes& types) {
  std::vector<std::unique_ptr<Extractor>> extractors;
  extractors.push_back(std::make_unique<HtmlExtractor>(types));
  return extractors;
}

}  // namespace vt
