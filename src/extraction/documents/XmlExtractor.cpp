#include "extraction/documents/XmlExtractor.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/ReadFile.h"
#include "extraction/documents/XmlParser.h"
#include "foundation/TextDecoding.h"

namespace vt {
namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20;

// Those that hold what people read, as all of an outline's do. Others are numbers, styles and the
// like.
constexpr auto kReadAttributes =
    std::to_array<std::string_view>({"_note", "alt", "author", "caption", "content", "description",
                                     "label", "name", "note", "summary", "text", "title", "value"});

class TextOfXml final : public XmlHandler {
 public:
  void start(std::string_view name, const XmlAttributes& attributes) override {
    ++depth_;
    text_.space();
    for (const std::string_view read : kReadAttributes) {
      text_.append(attributes.find(read));
      text_.space();
    }
    // As in SVG, feeds, outlines and books.
    isTitle_ = name == "title" && depth_ <= 3 && title_.empty();
  }
  void end(std::string_view /*name*/) override {
    --depth_;
    text_.space();
    isTitle_ = false;
  }
  void text(std::string_view text) override {
    text_.append(text);
    if (isTitle_ && title_.size() < kMostAttributeText) title_ += text;
  }
  bool isDone() const override { return text_.isFull(); }

  Extraction found() {
    Extraction extraction;
    extraction.text = text_.take();
    FoundAttributes(extraction).setText("kMDItemTitle", title_);
    return extraction;
  }

 private:
  BoundedText text_;
  std::string title_;
  std::size_t depth_ = 0;
  bool isTitle_ = false;
};

}  // namespace

Result<Extraction, ExtractionFailure> XmlExtractor::extract(int file, ContentTypeId /*type*/) {
  const Result<std::string, ExtractionFailure> bytes = readFileStart(file, kMostBytes);
  if (!bytes) return bytes.error();
  TextOfXml handler;
  XmlParser parser(handler);
  const bool isWellFormed = parser.read(*bytes) && parser.finish();
  if (isWellFormed || handler.isDone() || bytes->size() == kMostBytes) return handler.found();
  // Many files are nearly XML, as templates of it. Whoever looks for their words is to find them.
  std::string plain = decodePlainText(*bytes);
  if (plain.find('<') == plain.npos || plain.find('\0') != plain.npos) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed, parser.error()};
  }
  Extraction extraction;
  BoundedText text;
  text.append(plain);
  extraction.text = text.take();
  return extraction;
}

}  // namespace vt
