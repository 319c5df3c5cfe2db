#include "extraction/documents/XmlParser.h"

#include <expat.h>

#include <algorithm>

#include "extraction/documents/Charset.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

std::string_view withoutPrefix(std::string_view name) { return name.substr(name.rfind(':') + 1); }

XmlHandler& handlerOf(void* data) { return *static_cast<XmlHandler*>(data); }

void onStart(void* data, const XML_Char* name, const XML_Char** attributes) {
  handlerOf(data).start(withoutPrefix(name), XmlAttributes(attributes));
}

void onEnd(void* data, const XML_Char* name) { handlerOf(data).end(withoutPrefix(name)); }

void onText(void* data, const XML_Char* text, int length) {
  handlerOf(data).text({text, static_cast<std::size_t>(length)});
}

/// Tells expat what each byte of a character set stands for, where one byte is one character.
int onUnknownEncoding(void* /*data*/, const XML_Char* name, XML_Encoding* encoding) {
  for (int byte = 0; byte < 256; ++byte) {
    const char bytes[] = {static_cast<char>(byte)};
    const std::string text = decodedText({bytes, 1}, name);
    if (text.empty()) return XML_STATUS_ERROR;  // the beginning of several bytes
    const DecodedCodePoint decoded = decodeCodePoint(text);
    const bool isOne = decoded.valid && decoded.length == text.size();
    encoding->map[byte] = isOne && decoded.codePoint != kReplacementCharacter
                              ? static_cast<int>(decoded.codePoint)
                              : -1;
  }
  encoding->data = nullptr;
  encoding->convert = nullptr;
  encoding->release = nullptr;
  return XML_STATUS_OK;
}

}  // namespace

std::string_view XmlAttributes::find(std::string_view name) const {
  for (const char* const* pair = pairs_; pair[0]; pair += 2) {
    if (withoutPrefix(pair[0]) == name) return pair[1];
  }
  return {};
}

XmlParser::XmlParser(XmlHandler& handler)
    : parser_(::XML_ParserCreate(nullptr)), handler_(handler) {
  if (!parser_) return;
  ::XML_SetUserData(parser_, &handler);
  ::XML_SetElementHandler(parser_, onStart, onEnd);
  ::XML_SetCharacterDataHandler(parser_, onText);
  ::XML_SetUnknownEncodingHandler(parser_, onUnknownEncoding, nullptr);
}

XmlParser::~XmlParser() { ::XML_ParserFree(parser_); }

bool XmlParser::read(std::string_view piece) {
  // So that no piece is longer than expat can say, and the handler is asked now and then.
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;
  while (!piece.empty()) {
    const std::string_view next = piece.substr(0, kMostAtOnce);
    piece.remove_prefix(next.size());
    if (!parser_ || handler_.isDone() ||
        ::XML_Parse(parser_, next.data(), static_cast<int>(next.size()), XML_FALSE) !=
            XML_STATUS_OK) {
      return false;
    }
  }
  return true;
}

bool XmlParser::finish() {
  return parser_ && ::XML_Parse(parser_, nullptr, 0, XML_TRUE) == XML_STATUS_OK;
}

std::string XmlParser::error() const {
  const char* text = parser_ ? ::XML_ErrorString(::XML_GetErrorCode(parser_)) : nullptr;
  return "it is not well formed: " + std::string(text ? text : "it cannot be read");
}

}  // namespace vt
