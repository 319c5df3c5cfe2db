#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/UTF8.h"
#include "vistaro/LocalTime.h"
#include "vistaro/SearchReport.h"
#include "vistaro/ValueJSON.h"

namespace vt::tool {
namespace {

// The report is written as it goes: a tree of its values would cost more than the whole search.
class ReportText {
 public:
  explicit ReportText(std::string& text) : text_(text) {}

  void open(char bracket) {
    text_ += bracket;
    ++depth_;
    isFirst_ = true;
  }
  void close(char bracket) {
    --depth_;
    if (!isFirst_) breakLine();
    text_ += bracket;
    isFirst_ = false;
  }
  void beginElement() {
    if (!isFirst_) text_ += ',';
    breakLine();
    isFirst_ = false;
  }
  void key(std::string_view key) {
    beginElement();
    quoted(key);
    text_ += ": ";
  }
  void number(std::uint64_t number) { fmt::format_to(std::back_inserter(text_), "{}", number); }

  /// JSON text is UTF-8, which a file name need not be.
  void shown(const std::string& text) {
    if (isValidUTF8(text)) {
      quoted(text);
    } else {
      quoted(displayText(text));
    }
  }

  void value(const Value& value) {
    if (const auto* text = value.get<std::string>()) {
      shown(*text);
    } else if (const auto* date = value.get<Date>()) {
      quoted(instantText(*date));
    } else if (const Array* array = value.array().get()) {
      open('[');
      for (const Value& element : *array) {
        beginElement();
        this->value(element);
      }
      close(']');
    } else {
      text_ += jsonOf(value).dump();
    }
  }

 private:
  void breakLine() {
    text_ += '\n';
    text_.append(2 * depth_, ' ');
  }

  void quoted(std::string_view text) {
    text_ += '"';
    while (!text.empty()) {
      const auto end = std::ranges::find_if(text, needsEscape);
      text_.append(text.begin(), end);
      text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
      if (text.empty()) break;
      escape(text.front());
      text.remove_prefix(1);
    }
    text_ += '"';
  }

  static bool needsEscape(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
  }

  void escape(char c) {
    constexpr std::string_view kNamed = "\b\t\n\f\r\"\\";
    constexpr std::string_view kNames = "btnfr\"\\";
    const std::size_t known = kNamed.find(c);
    if (known == kNamed.npos) {
      fmt::format_to(std::back_inserter(text_), "\\u{:04x}", static_cast<unsigned char>(c));
    } else {
      text_ += '\\';
      text_ += kNames[known];
    }
  }

  std::string& text_;
  std::size_t depth_ = 0;
  bool isFirst_ = true;  // of what is open
};

void writeItems(ReportText& text, const SearchReport& report, const VTSearchResult& group) {
  text.open('[');
  const auto [first, last] = report.shown(group);
  for (std::size_t i = first; i < last; ++i) {
    text.beginElement();
    text.open('{');
    for (const auto& [key, value] : *group.results()->at(i)) {
      text.key(key.str());
      text.value(value);
    }
    text.close('}');
  }
  text.close(']');
}

}  // namespace

std::string jsonReport(const SearchReport& report) {
  constexpr std::size_t kUsualItem = 640;  // bytes
  std::string result;
  result.reserve(kUsualItem * report.count());
  ReportText text(result);
  text.open('{');
  text.key("query");
  text.shown(report.query);
  text.key("count");
  text.number(report.count());
  text.key("seconds");
  text.value(Value(report.seconds));
  text.key("groups");
  text.open('[');
  for (const auto& group : *report.groups) {
    text.beginElement();
    text.open('{');
    text.key("title");
    text.shown(group->title().value_or(""));
    text.key("count");
    text.number(group->count());
    text.key("items");
    writeItems(text, report, *group);
    text.close('}');
  }
  text.close(']');
  text.close('}');
  return result += '\n';
}

}  // namespace vt::tool
