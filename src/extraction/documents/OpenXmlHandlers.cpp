#include "extraction/documents/OpenXmlHandlers.h"

#include <charconv>
#include <cstdint>

#include "extraction/IsoDate.h"
#include "extraction/documents/DublinCore.h"

namespace vt {

void OpenXmlText::start(std::string_view name, const XmlAttributes& attributes) {
  if (name == "t") {
    isText_ = !isPhonetic_;
  } else if (name == "v") {
    isText_ = isValue_;
  } else if (name == "c") {
    const std::string_view kind = attributes.find("t");
    isValue_ = kind.empty() || kind == "n" || kind == "str" || kind == "d";
  } else if (name == "tab" || name == "br" || name == "cr") {
    text_.space();
  } else if (name == "rPh") {
    isPhonetic_ = true;
  } else if (name == "sheet") {
    text_.append(attributes.find("name"));
    text_.newLine();
  }
}

void OpenXmlText::end(std::string_view name) {
  isText_ = false;
  if (name == "p" || name == "si" || name == "row" || name == "comment") {
    text_.newLine();
  } else if (name == "c" || name == "tc") {
    text_.space();
  } else if (name == "rPh") {
    isPhonetic_ = false;
  }
}

void OpenXmlProperties::leaf(std::string_view name, std::string_view text) {
  if (takeDublinCore(name, text, attributes_)) return;
  if (name == "creator") {
    attributes_.addTexts("kMDItemAuthors", text, ";");
  } else if (name == "subject") {
    attributes_.setText("kMDItemSubject", text);
  } else if (name == "keywords") {
    attributes_.addTexts("kMDItemKeywords", text, ",;");
  } else if (name == "lastModifiedBy") {
    attributes_.addText("kMDItemEditors", text);
  } else if (name == "created") {
    attributes_.setDate("kMDItemContentCreationDate", dateInIsoText(text));
  } else if (name == "version") {
    attributes_.setText("kMDItemVersion", text);
  } else if (name == "Application") {
    attributes_.setText("kMDItemCreator", text);
  } else if (name == "Company") {
    attributes_.addText("kMDItemOrganizations", text);
  } else if (name == "Pages" || name == "Slides") {
    std::int64_t count = 0;
    std::from_chars(text.data(), text.data() + text.size(), count);
    if (count > 0) attributes_.setNumber("kMDItemNumberOfPages", count);
  }
}

}  // namespace vt
