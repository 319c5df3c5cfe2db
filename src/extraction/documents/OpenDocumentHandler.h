#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/documents/XmlParser.h"

namespace vt {

/// Text and properties of an OpenDocument, whichever part of it holds them.
class OpenDocumentHandler final : public XmlHandler {
 public:
  /// Borrows both.
  OpenDocumentHandler(BoundedText& text, FoundAttributes& attributes)
      : text_(text), attributes_(attributes) {}

  void start(std::string_view name, const XmlAttributes& attributes) override;
  void end(std::string_view name) override;
  void text(std::string_view text) override;
  bool isDone() const override { return text_.isFull(); }

  /// Whether the part says that others are encrypted.
  bool isEncrypted() const { return isEncrypted_; }

 private:
  void property(std::string_view name);

  BoundedText& text_;
  FoundAttributes& attributes_;
  std::size_t paragraphs_ = 0;  // within each other, as in notes
  std::size_t notRead_ = 0;     // elements within each other that are not read
  bool isMeta_ = false;
  bool isEncrypted_ = false;
  std::string property_;
};

}  // namespace vt
