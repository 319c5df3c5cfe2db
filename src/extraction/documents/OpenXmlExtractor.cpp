#include "extraction/documents/OpenXmlExtractor.h"

#include <string>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/documents/OpenXmlHandlers.h"
#include "extraction/documents/ReadPart.h"
#include "extraction/documents/ZipPackage.h"

namespace vt {
namespace {

bool isProperties(std::string_view part) {
  return part == "docProps/core.xml" || part == "docProps/app.xml";
}

bool hasText(std::string_view part) {
  if (!part.ends_with(".xml")) return false;
  for (const std::string_view beginning :
       {"word/document", "word/footnotes", "word/endnotes", "word/comments", "word/header",
        "word/footer", "word/charts/", "word/diagrams/data", "xl/sharedStrings", "xl/workbook.xml",
        "xl/worksheets/sheet", "xl/comments", "xl/drawings/drawing", "xl/charts/",
        "ppt/slides/slide", "ppt/notesSlides/notesSlide", "ppt/comments/", "ppt/charts/",
        "ppt/diagrams/data"}) {
    if (part.starts_with(beginning)) return true;
  }
  return false;
}

}  // namespace

Result<Extraction, ExtractionFailure> OpenXmlExtractor::extract(int file, ContentTypeId /*type*/) {
  Extraction extraction;
  FoundAttributes attributes(extraction);
  if (startsWith(file, kCompoundFileMagic)) {
    attributes.setText("kMDItemSecurityMethod", "Password Encrypted");
    return extraction;
  }
  BoundedText text;
  ZipPackage package(file);
  bool isDocument = false;
  while (const std::optional<std::string> part = package.next()) {
    if (isProperties(*part)) {
      OpenXmlProperties handler(attributes);
      readPart(package, handler);
    } else if (hasText(*part)) {
      isDocument = true;
      OpenXmlText handler(text);
      if (!text.isFull()) readPart(package, handler);
      text.newLine();
    }
  }
  if (const auto failure = failureOf(package)) return *failure;
  if (!isDocument && extraction.attributes.empty()) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed,
                             "it has no part that such a document has"};
  }
  attributes.setText("kMDItemSecurityMethod", "None");
  extraction.text = text.take();
  return extraction;
}

}  // namespace vt
