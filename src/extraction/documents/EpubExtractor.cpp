#include "extraction/documents/EpubExtractor.h"

#include <string>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/IsoDate.h"
#include "extraction/LookTime.h"
#include "extraction/documents/DublinCore.h"
#include "extraction/documents/HtmlText.h"
#include "extraction/documents/LeafTexts.h"
#include "extraction/documents/ReadPart.h"
#include "extraction/documents/ZipPackage.h"

namespace vt {
namespace {

// A chapter; a parsed one takes many times its size.
constexpr std::size_t kMostChapter = std::size_t{16} << 20;

/// What the package document of a book says.
class BookProperties final : public LeafTexts {
 public:
  explicit BookProperties(FoundAttributes& attributes) : attributes_(attributes) {}

 protected:
  void leaf(std::string_view name, std::string_view text) override {
    if (takeDublinCore(name, text, attributes_)) return;
    if (name == "creator") {
      attributes_.addText("kMDItemAuthors", text);
    } else if (name == "subject") {
      attributes_.addText("kMDItemKeywords", text);
    } else if (name == "date") {
      attributes_.setDate("kMDItemContentCreationDate", dateInIsoText(text));
    }
  }

 private:
  FoundAttributes& attributes_;
};

bool isChapter(std::string_view part) {
  return part.ends_with(".xhtml") || part.ends_with(".html") || part.ends_with(".htm");
}

}  // namespace

Result<Extraction, ExtractionFailure> EpubExtractor::extract(int file, ContentTypeId /*type*/) {
  Extraction extraction;
  FoundAttributes attributes(extraction);
  BoundedText text;
  ZipPackage package(file);
  bool isBook = false;
  while (const std::optional<std::string> part = package.next()) {
    if (part->ends_with(".opf")) {
      isBook = true;
      BookProperties handler(attributes);
      readPart(package, handler);
    } else if (isChapter(*part) && !text.isFull() && !isTimeShort()) {
      isBook = true;
      appendHtmlText(package.beginning(kMostChapter), text);
      text.newLine();
    }
  }
  if (const auto failure = failureOf(package)) return *failure;
  if (!isBook) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed, "it has no part that a book has"};
  }
  extraction.text = text.take();
  return extraction;
}

}  // namespace vt
