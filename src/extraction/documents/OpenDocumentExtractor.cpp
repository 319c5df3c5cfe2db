#include "extraction/documents/OpenDocumentExtractor.h"

#include <string>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/ReadFile.h"
#include "extraction/documents/OpenDocumentHandler.h"
#include "extraction/documents/ReadPart.h"
#include "extraction/documents/ZipPackage.h"

namespace vt {
namespace {

constexpr std::size_t kMostFlatBytes = std::size_t{64} << 20;

/// A document that is one XML file.
Result<Extraction, ExtractionFailure> extractFlat(int file) {
  const Result<std::string, ExtractionFailure> bytes = readFileStart(file, kMostFlatBytes);
  if (!bytes) return bytes.error();
  Extraction extraction;
  FoundAttributes attributes(extraction);
  BoundedText text;
  OpenDocumentHandler handler(text, attributes);
  XmlParser parser(handler);
  const bool isWellFormed = parser.read(*bytes) && parser.finish();
  extraction.text = text.take();
  if (!isWellFormed && extraction.text->empty()) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed, parser.error()};
  }
  return extraction;
}

}  // namespace

Result<Extraction, ExtractionFailure> OpenDocumentExtractor::extract(int file,
                                                                     ContentTypeId /*type*/) {
  if (!startsWith(file, kZipMagic)) return extractFlat(file);
  Extraction extraction;
  FoundAttributes attributes(extraction);
  BoundedText text;
  ZipPackage package(file);
  bool isDocument = false;
  bool isEncrypted = false;
  while (const std::optional<std::string> part = package.next()) {
    if (*part != "content.xml" && *part != "meta.xml" && *part != "META-INF/manifest.xml") continue;
    isDocument = true;
    OpenDocumentHandler handler(text, attributes);
    readPart(package, handler);
    isEncrypted = isEncrypted || handler.isEncrypted();
    text.newLine();
  }
  if (const auto failure = failureOf(package)) return *failure;
  if (!isDocument) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed,
                             "it has no part that such a document has"};
  }
  attributes.setText("kMDItemSecurityMethod", isEncrypted ? "Password Encrypted" : "None");
  if (!isEncrypted) extraction.text = text.take();
  return extraction;
}

}  // namespace vt
