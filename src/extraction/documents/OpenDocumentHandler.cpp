#include "extraction/documents/OpenDocumentHandler.h"

#include <charconv>
#include <cstdint>

#include "extraction/IsoDate.h"
#include "extraction/documents/DublinCore.h"

namespace vt {
namespace {

/// What is in the document but not in what people read: text that was deleted, and who wrote a
/// note when.
bool isNotRead(std::string_view name) {
  return name == "tracked-changes" || name == "creator" || name == "date" ||
         name == "creator-initials";
}

}  // namespace

void OpenDocumentHandler::start(std::string_view name, const XmlAttributes& attributes) {
  if (name == "encryption-data") isEncrypted_ = true;
  if (name == "meta") isMeta_ = true;
  if (isMeta_) {
    property_.clear();
    if (name != "document-statistic") return;
    const std::string_view pages = attributes.find("page-count");
    std::int64_t count = 0;
    std::from_chars(pages.data(), pages.data() + pages.size(), count);
    if (count > 0) attributes_.setNumber("kMDItemNumberOfPages", count);
  } else if (notRead_ > 0 || isNotRead(name)) {
    ++notRead_;
  } else if (name == "p" || name == "h") {
    ++paragraphs_;
  } else if (name == "s" || name == "tab" || name == "line-break") {
    text_.space();
  }
}

void OpenDocumentHandler::end(std::string_view name) {
  if (isMeta_) {
    property(name);
    property_.clear();
    if (name == "meta") isMeta_ = false;
  } else if (notRead_ > 0) {
    --notRead_;
  } else if (name == "p" || name == "h") {
    if (paragraphs_ > 0) --paragraphs_;
    text_.newLine();
  }
}

void OpenDocumentHandler::text(std::string_view text) {
  if (isMeta_) {
    if (property_.size() < kMostAttributeText) property_ += text;
  } else if (paragraphs_ > 0 && notRead_ == 0) {
    text_.append(text);
  }
}

void OpenDocumentHandler::property(std::string_view name) {
  if (property_.empty() || takeDublinCore(name, property_, attributes_)) return;
  if (name == "initial-creator") {
    attributes_.addText("kMDItemAuthors", property_);
  } else if (name == "creator") {
    attributes_.addText("kMDItemEditors", property_);
  } else if (name == "subject") {
    attributes_.setText("kMDItemSubject", property_);
  } else if (name == "keyword") {
    attributes_.addText("kMDItemKeywords", property_);
  } else if (name == "generator") {
    attributes_.setText("kMDItemCreator", property_);
  } else if (name == "creation-date") {
    attributes_.setDate("kMDItemContentCreationDate", dateInIsoText(property_));
  }
}

}  // namespace vt
