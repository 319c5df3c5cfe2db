#pragma once

#include <memory>
#include <string>
#include <string_view>

struct XML_ParserStruct;

namespace vt {

/// The attributes of an element.
class XmlAttributes {
 public:
  /// As expat gives them.
  explicit XmlAttributes(const char* const* pairs) : pairs_(pairs) {}

  /// The value of the attribute of that name, whatever its prefix; "" when there is none.
  std::string_view find(std::string_view name) const;

 private:
  const char* const* pairs_;
};

/// Is told what an XML document holds. Names are without prefix, text is UTF-8 in pieces.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  virtual void start(std::string_view name, const XmlAttributes& attributes) = 0;
  virtual void end(std::string_view name) = 0;
  virtual void text(std::string_view text) = 0;
  /// Whether it has seen enough.
  virtual bool isDone() const { return false; }
};

/// Reads a document that comes in pieces, of anyone's making. Nothing outside the document is read;
/// entities that unfold to much more than the document is are refused.
class XmlParser {
 public:
  /// Borrows `handler`.
  explicit XmlParser(XmlHandler& handler);
  XmlParser(const XmlParser&) = delete;
  XmlParser& operator=(const XmlParser&) = delete;
  ~XmlParser();

  /// Reads the next piece. False when it is not well formed, or the handler has seen enough.
  bool read(std::string_view piece);
  /// Says that there are no more pieces. False when the document is not complete.
  bool finish();

  /// What is wrong with the document, as the end of a sentence.
  std::string error() const;

 private:
  XML_ParserStruct* parser_;
  XmlHandler& handler_;
};

}  // namespace vt
