#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <utility>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/UTF8.h"
#include "vistaro/LocalTime.h"
#include "vistaro/SearchReport.h"
#include "vistaro/ValueJSON.h"

namespace vt::tool {
namespace {

/// How many bytes from the beginning stand for themselves in JSON text.
std::size_t plainLength(std::string_view text) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighBits = 0x80 * kOnes;
  // The highest bit of the lowest byte that is zero; of bytes above it perhaps others.
  const auto zeros = [](std::uint64_t bytes) { return (bytes - kOnes) & ~bytes & kHighBits; };
  std::size_t at = 0;
  for (; text.size() - at >= sizeof(std::uint64_t); at += sizeof(std::uint64_t)) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text.data() + at, sizeof bytes);
    const std::uint64_t controls = (bytes - 0x20 * kOnes) & ~bytes & kHighBits;
    if ((controls | zeros(bytes ^ '"' * kOnes) | zeros(bytes ^ '\\' * kOnes)) != 0) break;
  }
  const auto needsEscape = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
  };
  return static_cast<std::size_t>(std::ranges::find_if(text.substr(at), needsEscape) -
                                  text.begin());
}

// The report is written as it goes: a tree of its values would cost more than the whole search, and
// the text of all a quarter of that in memory that is touched for the first time.
class ReportText {
 public:
  explicit ReportText(std::FILE* out) : out_(out) { text_.reserve(2 * kEnoughToWrite); }
  ReportText(const ReportText&) = delete;
  ReportText& operator=(const ReportText&) = delete;
  ~ReportText() {
    text_ += '\n';
    write();
  }

  void open(char bracket) {
    if (text_.size() >= kEnoughToWrite) write();
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
      this->array(*array);
    } else {
      text_ += jsonOf(value).dump();
    }
  }

 private:
  void breakLine() {
    text_ += '\n';
    text_.append(2 * depth_, ' ');
  }

  // Items of a type share the array of what it conforms to.
  void array(const Array& array) {
    const auto [known, isNew] = arrays_.try_emplace({&array, depth_});
    if (!isNew) {
      text_ += known->second;
      isFirst_ = false;
      return;
    }
    const std::size_t begin = text_.size();
    text_ += '[';
    ++depth_;
    isFirst_ = true;
    for (const Value& element : array) {
      beginElement();
      value(element);
    }
    close(']');
    known->second = text_.substr(begin);
  }

  void write() {
    std::fwrite(text_.data(), 1, text_.size(), out_);
    text_.clear();
  }

  void quoted(std::string_view text) {
    text_ += '"';
    while (!text.empty()) {
      const std::size_t plain = plainLength(text);
      text_.append(text.substr(0, plain));
      text.remove_prefix(plain);
      if (text.empty()) break;
      escape(text.front());
      text.remove_prefix(1);
    }
    text_ += '"';
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

  static constexpr std::size_t kEnoughToWrite = 65'536;  // bytes

  std::FILE* out_;
  std::string text_;  // what is to be written next
  std::map<std::pair<const Array*, std::size_t>, std::string> arrays_;  // by depth, too
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

void writeJSONReport(const SearchReport& report, std::FILE* out) {
  ReportText text(out);
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
}

}  // namespace vt::tool
