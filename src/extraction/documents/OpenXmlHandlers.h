#pragma once

#include <string_view>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/documents/LeafTexts.h"
#include "extraction/documents/XmlParser.h"

namespace vt {

/// The text of any part of an Office Open XML document: what people read in it, and numbers of
/// spreadsheets.
class OpenXmlText final : public XmlHandler {
 public:
  explicit OpenXmlText(BoundedText& text) : text_(text) {}

  void start(std::string_view name, const XmlAttributes& attributes) override;
  void end(std::string_view name) override;
  void text(std::string_view text) override {
    if (isText_) text_.append(text);
  }
  bool isDone() const override { return text_.isFull(); }

 private:
  BoundedText& text_;
  bool isText_ = false;
  bool isValue_ = false;     // what the cell holds is not the place of a text elsewhere
  bool isPhonetic_ = false;  // how to read a text that is there, too
};

/// What "docProps/core.xml" and "docProps/app.xml" say.
class OpenXmlProperties final : public LeafTexts {
 public:
  explicit OpenXmlProperties(FoundAttributes& attributes) : attributes_(attributes) {}

 protected:
  void leaf(std::string_view name, std::string_view text) override;

 private:
  FoundAttributes& attributes_;
};

}  // namespace vt
