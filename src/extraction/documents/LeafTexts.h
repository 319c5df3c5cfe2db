#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "extraction/FoundAttributes.h"
#include "extraction/documents/XmlParser.h"

namespace vt {

/// A handler for documents whose elements hold a text each: hands out each element with its text.
class LeafTexts : public XmlHandler {
 public:
  void start(std::string_view /*name*/, const XmlAttributes& /*attributes*/) override {
    text_.clear();
  }
  void end(std::string_view name) override {
    if (!text_.empty()) leaf(name, text_);
    text_.clear();
  }
  void text(std::string_view text) override {
    if (text_.size() < kMostAttributeText) text_ += text;
  }

 protected:
  virtual void leaf(std::string_view name, std::string_view text) = 0;

 private:
  std::string text_;
};

}  // namespace vt
