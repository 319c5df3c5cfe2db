#include "foundation/XMLPropertyListWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/PropertyListBase64.h"
#include "foundation/PropertyListScalars.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

using Kind = PropertyListErrorKind;

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kFooter = "</plist>\n";

constexpr std::size_t kBytesPerDataLine = 57;  // 76 digits, as mail has them

// Bytes that text may hold as they are. Not among them, although ASCII: the three that are markup,
// CR, which a reader would take for a line feed, and the control characters, which XML cannot hold.
constexpr std::array<bool, 256> kIsPlain = [] {
  std::array<bool, 256> isPlain{};
  for (std::size_t byte = 0x20; byte < 0x80; ++byte) isPlain[byte] = true;
  for (const char c : {'\n', '\t'}) isPlain[static_cast<unsigned char>(c)] = true;
  for (const char c : {'<', '>', '&'}) isPlain[static_cast<unsigned char>(c)] = false;
  return isPlain;
}();

std::size_t plainLength(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && kIsPlain[static_cast<unsigned char>(text[length])]) ++length;
  return length;
}

class XMLPropertyListWriter {
 public:
  explicit XMLPropertyListWriter(const PropertyListLimits& limits) : limits_(limits) {}

  Result<std::string, PropertyListError> write(const Value& root) {
    xml_ = kHeader;
    if (writeValue(root)) {
      xml_ += kFooter;
      if (fitsSize()) return std::move(xml_);
    }
    return std::move(*error_);
  }

 private:
  using Step = std::variant<std::string_view, std::size_t>;  // a key or an index

  bool fail(Kind kind, std::string_view text) {
    error_ = {kind, xml_.size(), 0, fmt::format("{}: {}", place(), text)};
    return false;
  }

  // "/users/7/name", for people.
  std::string place() const {
    constexpr std::size_t kMostSteps = 16;
    std::string place;
    for (std::size_t i = 0; i < std::min(path_.size(), kMostSteps); ++i) {
      place += '/';
      if (const auto* key = std::get_if<std::string_view>(&path_[i])) {
        place += displayText(*key);
      } else {
        place += std::to_string(std::get<std::size_t>(path_[i]));
      }
    }
    if (path_.size() > kMostSteps) place += "/…";
    return place.empty() ? "the root" : place;
  }

  bool fitsSize() {
    if (xml_.size() <= limits_.bytes) return true;
    return fail(Kind::kTooLarge, fmt::format("more than {} bytes", limits_.bytes));
  }

  void indent() { xml_.append(depth_, '\t'); }

  bool writeValue(const Value& value) {
    if (!fitsSize()) return false;
    if (++objects_ > limits_.objects) {
      return fail(Kind::kTooManyObjects, fmt::format("more than {} values", limits_.objects));
    }
    switch (value.kind()) {
      case ValueKind::kArray:
        return writeArray(*value.array());
      case ValueKind::kDictionary:
        return writeDictionary(*value.dictionary());
      case ValueKind::kNull:
      case ValueKind::kObject:
        return fail(Kind::kUnsupported,
                    fmt::format("{} in a property list", describeKind(value.kind())));
      default:
        break;
    }
    indent();
    return writeLeaf(value);
  }

  bool writeLeaf(const Value& value) {
    switch (value.kind()) {
      case ValueKind::kBoolean:
        xml_ += *value.get<bool>() ? "<true/>\n" : "<false/>\n";
        return true;
      case ValueKind::kInteger:
        appendInteger(*value.get<std::int64_t>());
        return true;
      case ValueKind::kUnsignedInteger:
        appendInteger(*value.get<std::uint64_t>());
        return true;
      case ValueKind::kReal:
        xml_ += "<real>";
        appendPropertyListReal(xml_, *value.get<double>());
        xml_ += "</real>\n";
        return true;
      case ValueKind::kDate:
        return writeDate(*value.get<Date>());
      case ValueKind::kString:
        return writeText("<string>", *value.get<std::string>(), "</string>\n");
      default:
        writeData(*value.get<Data>());
        return true;
    }
  }

  template <class Integer>
  void appendInteger(Integer integer) {
    const fmt::format_int digits(integer);
    xml_ += "<integer>";
    xml_.append(digits.data(), digits.size());
    xml_ += "</integer>\n";
  }

  bool writeDate(Date date) {
    xml_ += "<date>";
    if (!appendPropertyListDate(xml_, date)) {
      return fail(Kind::kInvalidValue, "a date outside the years 1 to 9999");
    }
    xml_ += "</date>\n";
    return true;
  }

  void writeData(const Data& data) {
    xml_ += "<data>\n";
    const std::span<const std::uint8_t> bytes = data.bytes();
    for (std::size_t i = 0; i < bytes.size() && xml_.size() <= limits_.bytes;
         i += kBytesPerDataLine) {
      indent();
      appendBase64(xml_, bytes.subspan(i, std::min(kBytesPerDataLine, bytes.size() - i)));
      xml_ += '\n';
    }
    indent();
    xml_ += "</data>\n";
  }

  bool writeText(std::string_view opening, std::string_view text, std::string_view closing) {
    xml_ += opening;
    while (true) {
      const std::size_t plain = plainLength(text);
      xml_.append(text.substr(0, plain));
      text.remove_prefix(plain);
      if (text.empty()) break;
      const std::size_t length = writeSpecial(text);
      if (length == 0) return false;
      text.remove_prefix(length);
    }
    xml_ += closing;
    return true;
  }

  /// Writes the character that `text` begins with; its length, 0 on failure.
  std::size_t writeSpecial(std::string_view text) {
    switch (text.front()) {
      case '<':
        xml_ += "&lt;";
        return 1;
      case '>':
        xml_ += "&gt;";
        return 1;
      case '&':
        xml_ += "&amp;";
        return 1;
      case '\r':
        xml_ += "&#13;";
        return 1;
      default:
        break;
    }
    const DecodedCodePoint decoded = decodeCodePoint(text);
    if (!decoded.valid) {
      fail(Kind::kInvalidText, "text that is not UTF-8");
      return 0;
    }
    if (decoded.codePoint < 0x20 || decoded.codePoint == 0xFFFE || decoded.codePoint == 0xFFFF) {
      fail(Kind::kInvalidText, fmt::format("the character U+{:04X}, which XML cannot hold",
                                           static_cast<std::uint32_t>(decoded.codePoint)));
      return 0;
    }
    xml_.append(text.substr(0, decoded.length));
    return decoded.length;
  }

  bool open(std::string_view name, bool isEmpty) {
    if (depth_ == limits_.depth) {
      return fail(Kind::kTooDeep,
                  fmt::format("more than {} containers in one another", limits_.depth));
    }
    indent();
    xml_ += '<';
    xml_ += name;
    xml_ += isEmpty ? "/>\n" : ">\n";
    if (!isEmpty) ++depth_;
    return true;
  }

  void close(std::string_view name) {
    --depth_;
    indent();
    xml_ += "</";
    xml_ += name;
    xml_ += ">\n";
  }

  bool writeArray(const Array& array) {
    if (!open("array", array.empty())) return false;
    if (array.empty()) return true;
    for (std::size_t i = 0; i < array.size(); ++i) {
      path_.emplace_back(i);
      if (!writeValue(array.elements()[i])) return false;
      path_.pop_back();
    }
    close("array");
    return true;
  }

  bool writeDictionary(const Dictionary& dictionary) {
    if (!open("dict", dictionary.empty())) return false;
    if (dictionary.empty()) return true;
    for (const auto& [key, value] : dictionary) {
      path_.emplace_back(std::string_view(key.str()));
      indent();
      if (!writeText("<key>", key.str(), "</key>\n") || !writeValue(value)) return false;
      path_.pop_back();
    }
    close("dict");
    return true;
  }

  const PropertyListLimits limits_;
  std::string xml_;
  std::size_t depth_ = 0;
  std::size_t objects_ = 0;
  std::vector<Step> path_;
  std::optional<PropertyListError> error_;
};

}  // namespace

Result<std::string, PropertyListError> writeXMLPropertyList(const Value& root,
                                                            const PropertyListLimits& limits) {
  return XMLPropertyListWriter(limits).write(root);
}

}  // namespace vt
