#include "foundation/OldStylePropertyListReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/KeyCache.h"
#include "foundation/NextStepEncoding.h"
#include "foundation/UTF16.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

using Kind = PropertyListErrorKind;

bool isUnquoted(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$' || c == '/' || c == ':' || c == '.' || c == '-';
}

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

std::optional<unsigned> hexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  return std::nullopt;
}

/// Recursive descent over UTF-8; offsets are into that text. The first error ends the work: every
/// function then answers nothing, up to the top.
class OldStylePropertyListReader {
 public:
  OldStylePropertyListReader(std::string_view text, const PropertyListLimits& limits)
      : text_(text), limits_(limits) {}

  std::optional<Value> readRoot() {
    if (!skipBlanks()) return std::nullopt;
    if (atEnd() && sawComment_) return Value(std::make_shared<Dictionary>());
    if (atEnd()) return fail(position_, Kind::kTruncated, "nothing but blanks");
    const std::size_t start = position_;
    std::optional<Value> root = readValue();
    if (!root || !skipBlanks()) return std::nullopt;
    if (atEnd()) return root;
    if (root->get<std::string>() && (peek() == '=' || peek() == ';')) {
      position_ = start;
      return readEntries(/*braced=*/false);
    }
    return fail(position_, Kind::kSyntax, fmt::format("{} after the root value", nextPiece()));
  }

  const std::optional<PropertyListError>& error() const { return error_; }

 private:
  std::nullopt_t fail(std::size_t offset, Kind kind, std::string text) {
    if (!error_) error_ = {kind, offset, lineAtOffset(text_, offset), std::move(text)};
    return std::nullopt;
  }

  bool atEnd() const { return position_ == text_.size(); }
  char peek() const { return text_[position_]; }

  // The character at the position, for a message.
  std::string nextPiece() const {
    const std::string_view rest = text_.substr(position_);
    return quotedPiece(rest.substr(0, decodeCodePoint(rest).length));
  }

  /// Passes over white space and comments; false when a comment does not end.
  bool skipBlanks() {
    while (!atEnd()) {
      const std::string_view rest = text_.substr(position_);
      if (isBlank(rest.front())) {
        ++position_;
        continue;
      }
      if (rest.starts_with("//")) {
        position_ += std::min(rest.find_first_of("\r\n"), rest.size());
      } else if (rest.starts_with("/*")) {
        const std::size_t end = rest.find("*/", 2);
        if (end == std::string_view::npos) {
          fail(position_, Kind::kTruncated, "a comment that does not end");
          return false;
        }
        position_ += end + 2;
      } else {
        break;
      }
      sawComment_ = true;
    }
    return true;
  }

  /// Passes over blanks, then `c` if it comes next.
  bool skip(char c) {
    if (!skipBlanks() || atEnd() || peek() != c) return false;
    ++position_;
    return true;
  }

  std::nullopt_t failMissing(std::string_view wanted) {
    if (error_) return std::nullopt;
    if (atEnd()) return fail(position_, Kind::kTruncated, fmt::format("the end, not {}", wanted));
    return fail(position_, Kind::kSyntax, fmt::format("{}, not {}", nextPiece(), wanted));
  }

  std::optional<Value> readValue() {
    if (!skipBlanks()) return std::nullopt;
    if (atEnd()) return failMissing("a value");
    if (++objects_ > limits_.objects) {
      return fail(position_, Kind::kTooManyObjects,
                  fmt::format("more than {} values", limits_.objects));
    }
    switch (peek()) {
      case '{':
        return readNested(&OldStylePropertyListReader::readDictionary);
      case '(':
        return readNested(&OldStylePropertyListReader::readArray);
      case '<':
        return readData();
      default:
        break;
    }
    std::optional<std::string> string = readString("a value");
    return string ? std::optional<Value>(std::move(*string)) : std::nullopt;
  }

  std::optional<Value> readNested(std::optional<Value> (OldStylePropertyListReader::*read)()) {
    if (depth_ == limits_.depth) {
      return fail(position_, Kind::kTooDeep,
                  fmt::format("more than {} containers in one another", limits_.depth));
    }
    ++depth_;
    ++position_;
    std::optional<Value> value = (this->*read)();
    --depth_;
    return value;
  }

  std::optional<Value> readDictionary() { return readEntries(/*braced=*/true); }

  /// `key = value;` or `key;`, which stands for `key = key;`, until the brace or the end.
  std::optional<Value> readEntries(bool braced) {
    const auto dictionary = std::make_shared<Dictionary>();
    while (true) {
      if (!skipBlanks()) return std::nullopt;
      if (braced && skip('}')) return Value(dictionary);
      if (atEnd() && !braced) return Value(dictionary);
      const std::string_view wanted = braced ? "a key or \"}\"" : "a key";
      const std::optional<std::string> text = readString(wanted);
      if (!text) return std::nullopt;
      const Key key = keys_.keyFor(*text);
      std::optional<Value> value = *text;
      if (skip('=')) {
        value = readValue();
        if (!value) return std::nullopt;
      }
      if (!skip(';')) return failMissing("\";\"");
      dictionary->set(key, std::move(*value));
    }
  }

  std::optional<Value> readArray() {
    const auto array = std::make_shared<Array>();
    while (!skip(')')) {
      std::optional<Value> element = readValue();
      if (!element) return std::nullopt;
      array->append(std::move(*element));
      if (skip(',')) continue;  // one behind the last element is fine, too
      if (skip(')')) break;
      return failMissing("\",\" or \")\"");
    }
    return Value(array);
  }

  std::optional<Value> readData() {
    const std::size_t start = position_++;
    std::vector<std::uint8_t> bytes;
    std::size_t digits = 0;
    for (; !atEnd() && peek() != '>'; ++position_) {
      if (isBlank(peek())) continue;
      const std::optional<unsigned> digit = hexDigit(peek());
      if (!digit) {
        return fail(position_, Kind::kInvalidValue,
                    fmt::format("{}, not a hexadecimal digit", nextPiece()));
      }
      if (digits++ % 2 == 0) bytes.push_back(0);
      bytes.back() = static_cast<std::uint8_t>(bytes.back() << 4 | *digit);
    }
    if (atEnd()) return failMissing("\">\"");
    if (digits % 2 != 0) {
      return fail(start, Kind::kInvalidValue, "an odd number of hexadecimal digits");
    }
    ++position_;
    return Value(Data(std::move(bytes)));
  }

  std::optional<std::string> readString(std::string_view wanted) {
    if (atEnd()) return failMissing(wanted);
    if (peek() == '"' || peek() == '\'') return readQuoted();
    const std::size_t start = position_;
    while (!atEnd() && isUnquoted(peek())) ++position_;
    if (position_ == start) return failMissing(wanted);
    return std::string(text_.substr(start, position_ - start));
  }

  std::optional<std::string> readQuoted() {
    const std::size_t start = position_++;
    const char stops[] = {text_[start], '\\'};
    std::string string;
    while (true) {
      const std::size_t stop = text_.find_first_of(std::string_view(stops, 2), position_);
      if (stop == std::string_view::npos) {
        return fail(start, Kind::kTruncated, "a string whose quote is not closed");
      }
      string.append(text_.substr(position_, stop - position_));
      position_ = stop + 1;
      if (text_[stop] != '\\') return string;
      if (!readEscape(start, string)) return std::nullopt;
    }
  }

  /// Appends what the escape behind the backslash just passed stands for.
  bool readEscape(std::size_t stringStart, std::string& string) {
    if (atEnd()) {
      fail(stringStart, Kind::kTruncated, "a string whose quote is not closed");
      return false;
    }
    const char c = peek();
    if (c >= '0' && c <= '7') return readOctalEscape(string);
    if (c == 'U' || c == 'u') return readUnicodeEscape(string);
    constexpr std::string_view kLetters = "abfnrtv";
    constexpr std::string_view kMeanings = "\a\b\f\n\r\t\v";
    const std::size_t letter = kLetters.find(c);
    // Any other character stands for itself, a quote and a backslash among them.
    string.push_back(letter == std::string_view::npos ? c : kMeanings[letter]);
    ++position_;
    return true;
  }

  bool readOctalEscape(std::string& string) {
    const std::size_t escape = position_ - 1;
    unsigned code = 0;
    for (int i = 0; i < 3 && !atEnd() && peek() >= '0' && peek() <= '7'; ++i, ++position_) {
      code = code * 8 + static_cast<unsigned>(peek() - '0');
    }
    const std::optional<char32_t> codePoint =
        code <= 0xFF ? codePointFromNextStep(static_cast<std::uint8_t>(code)) : std::nullopt;
    if (!codePoint) {
      fail(escape, Kind::kInvalidText, fmt::format("no character has the octal code {:o}", code));
      return false;
    }
    appendCodePoint(string, *codePoint);
    return true;
  }

  bool readUnicodeEscape(std::string& string) {
    const std::size_t escape = position_ - 1;
    std::optional<char32_t> unit = readFourHexDigits();
    if (unit && *unit >= 0xD800 && *unit <= 0xDBFF) {
      const std::string_view rest = text_.substr(position_);
      const bool hasNext = rest.starts_with("\\U") || rest.starts_with("\\u");
      if (hasNext) ++position_;
      const std::optional<char32_t> next = hasNext ? readFourHexDigits() : std::nullopt;
      const bool isPair = next && *next >= 0xDC00 && *next <= 0xDFFF;
      unit = isPair ? 0x10000 + ((*unit - 0xD800) << 10) + (*next - 0xDC00) : 0xDFFF;
    }
    if (!unit) {
      fail(escape, Kind::kSyntax, "an escape without four hexadecimal digits");
    } else if (*unit >= 0xD800 && *unit <= 0xDFFF) {
      fail(escape, Kind::kInvalidText, "an escape that is half of a surrogate pair");
    } else {
      appendCodePoint(string, *unit);
    }
    return !error_;
  }

  // The position is on the U.
  std::optional<char32_t> readFourHexDigits() {
    ++position_;
    char32_t number = 0;
    for (int i = 0; i < 4; ++i, ++position_) {
      const std::optional<unsigned> digit = atEnd() ? std::nullopt : hexDigit(peek());
      if (!digit) return std::nullopt;
      number = number << 4 | *digit;
    }
    return number;
  }

  const std::string_view text_;
  const PropertyListLimits limits_;
  std::size_t position_ = 0;
  bool sawComment_ = false;
  std::size_t depth_ = 0;
  std::size_t objects_ = 0;
  KeyCache keys_;
  std::optional<PropertyListError> error_;
};

Result<Value, PropertyListError> readUTF8(std::string_view text, const PropertyListLimits& limits) {
  const std::size_t valid = validUTF8Length(text);
  if (valid != text.size()) {
    return PropertyListError{Kind::kInvalidText, valid, lineAtOffset(text, valid),
                             "bytes that are not UTF-8"};
  }
  OldStylePropertyListReader reader(text, limits);
  std::optional<Value> root = reader.readRoot();
  if (root) return std::move(*root);
  return *reader.error();
}

std::size_t utf16Size(std::string_view text) {
  std::size_t size = 0;
  while (!text.empty()) {
    const DecodedCodePoint decoded = decodeCodePoint(text);
    size += decoded.codePoint > 0xFFFF ? 4 : 2;
    text.remove_prefix(decoded.length);
  }
  return size;
}

Result<Value, PropertyListError> readUTF16(std::string_view bytes, ByteOrder order,
                                           const PropertyListLimits& limits) {
  constexpr std::size_t kMarkSize = 2;
  const UTF16Decoding decoding = decodeUTF16(bytes.substr(kMarkSize), order);
  if (decoding.errorOffset) {
    return PropertyListError{Kind::kInvalidText, kMarkSize + *decoding.errorOffset,
                             lineAtOffset(decoding.text, decoding.text.size()),
                             "half of a UTF-16 character"};
  }
  Result<Value, PropertyListError> result = readUTF8(decoding.text, limits);
  if (result) return result;
  PropertyListError error = result.error();
  error.offset = kMarkSize + utf16Size(std::string_view(decoding.text).substr(0, error.offset));
  return error;
}

}  // namespace

Result<Value, PropertyListError> readOldStylePropertyList(std::string_view bytes,
                                                          const PropertyListLimits& limits) {
  constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";
  if (bytes.size() > limits.bytes) return tooManyBytes(bytes.size(), limits.bytes);
  if (bytes.starts_with("\xFF\xFE")) return readUTF16(bytes, ByteOrder::kLittleEndian, limits);
  if (bytes.starts_with("\xFE\xFF")) return readUTF16(bytes, ByteOrder::kBigEndian, limits);
  if (!bytes.starts_with(kUTF8Mark)) return readUTF8(bytes, limits);
  Result<Value, PropertyListError> result = readUTF8(bytes.substr(kUTF8Mark.size()), limits);
  if (result) return result;
  PropertyListError error = result.error();
  error.offset += kUTF8Mark.size();
  return error;
}

}  // namespace vt
