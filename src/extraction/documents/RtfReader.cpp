#include "extraction/documents/RtfReader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "extraction/IsoDate.h"
#include "extraction/LookTime.h"
#include "extraction/documents/Charset.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

constexpr std::size_t kMostGroups = 1000;
constexpr std::size_t kMostFonts = 4096;

struct Character {
  std::string_view word;
  std::string_view text;
};
constexpr auto kCharacters = std::to_array<Character>({
    {"~", "\u00A0"},
    {"_", "\u2011"},
    {"emdash", "\u2014"},
    {"endash", "\u2013"},
    {"lquote", "\u2018"},
    {"rquote", "\u2019"},
    {"ldblquote", "\u201C"},
    {"rdblquote", "\u201D"},
    {"bullet", "\u2022"},
    {"emspace", " "},
    {"enspace", " "},
    {"tab", " "},
    {"cell", " "},
    {"par", "\n"},
    {"line", "\n"},
    {"row", "\n"},
    {"sect", "\n"},
    {"page", "\n"},
    {"\\", "\\"},
    {"{", "{"},
    {"}", "}"},
    {"\n", "\n"},
    {"\r", "\n"},
});

constexpr auto kProperties = std::to_array<std::string_view>(
    {"title", "author", "subject", "keywords", "doccomm", "company", "operator"});

constexpr auto kNoText = std::to_array<std::string_view>(
    {"colortbl",  "stylesheet", "listtable", "listoverridetable", "pict",        "object",
     "objdata",   "fldinst",    "sp",        "filetbl",           "revtbl",      "rsidtbl",
     "themedata", "datastore",  "xmlnstbl",  "printim",           "revtim",      "buptim",
     "bkmkstart", "bkmkend",    "private1",  "nonshppict",        "latentstyles"});

/// The character set of a number of \fcharset; nullptr for those that leave it to the document.
const char* charsetOf(int number) {
  switch (number) {
    case 0:
      return "windows-1252";
    case 77:
      return "macintosh";
    case 128:
      return "cp932";
    case 129:
      return "cp949";
    case 134:
      return "gbk";
    case 136:
      return "big5";
    case 161:
      return "windows-1253";
    case 162:
      return "windows-1254";
    case 163:
      return "windows-1258";
    case 177:
      return "windows-1255";
    case 178:
      return "windows-1256";
    case 186:
      return "windows-1257";
    case 204:
      return "windows-1251";
    case 222:
      return "cp874";
    case 238:
      return "windows-1250";
    default:
      return nullptr;
  }
}

}  // namespace

bool RtfReader::read(std::string_view bytes) {
  if (!bytes.starts_with("{\\rtf")) return false;
  RtfTokens tokens(bytes);
  std::size_t count = 0;
  for (RtfToken token = tokens.next(); token.kind != RtfToken::Kind::kEnd; token = tokens.next()) {
    constexpr std::size_t kBetweenLooks = 65536;
    if (text_.isFull() || (++count % kBetweenLooks == 0 && isTimeShort())) break;
    switch (token.kind) {
      case RtfToken::Kind::kOpen:
        open();
        break;
      case RtfToken::Kind::kClose:
        close();
        break;
      case RtfToken::Kind::kControl:
        if (!groups_.empty()) control(tokens, token);
        break;
      case RtfToken::Kind::kByte:
        if (!groups_.empty()) addByte(static_cast<char>(*token.parameter));
        break;
      case RtfToken::Kind::kText:
        if (!groups_.empty()) text(token.text);
        break;
      case RtfToken::Kind::kEnd:
        break;
    }
  }
  flush();
  extraction_.text = text_.take();
  return true;
}

void RtfReader::open() {
  flush();
  toSkip_ = 0;
  if (groups_.size() >= kMostGroups) {
    ++ignoredGroups_;
  } else {
    groups_.push_back(groups_.empty() ? Group() : groups_.back());
    group().isOptional = false;
  }
}

void RtfReader::close() {
  flush();
  toSkip_ = 0;
  if (ignoredGroups_ > 0) {
    --ignoredGroups_;
    return;
  }
  if (groups_.empty()) return;
  const Group closed = std::move(groups_.back());
  groups_.pop_back();
  const Destination around = groups_.empty() ? Destination::kBody : group().destination;
  if (closed.destination == around) return;
  if (closed.destination == Destination::kProperty) keepProperty(closed.property);
  if (closed.destination == Destination::kGenerator) keepProperty("generator");
  if (closed.destination == Destination::kCreated) {
    attributes_.setDate(
        "kMDItemContentCreationDate",
        dateOf(created_.year, created_.month, created_.day, created_.hour, created_.minute, 0));
  }
}

void RtfReader::control(RtfTokens& tokens, const RtfToken& token) {
  const std::string_view word = token.text;
  const int parameter = token.parameter.value_or(0);
  if (word == "bin") {
    tokens.skip(static_cast<std::size_t>(std::max(parameter, 0)));
  } else if (word == "u") {
    unicode(parameter);
  } else if (word == "uc") {
    group().fallbackLength = std::clamp(parameter, 0, 100);
  } else if (word == "*") {
    group().isOptional = true;
  } else if (word == "ansicpg") {
    codePage_ = parameter;
  } else if (word == "mac") {
    codePage_ = 10000;
  } else if (word == "f" || word == "plain" || word == "deff") {
    flush();
    group().font = parameter;
  } else if (word == "fcharset") {
    if (charsetOfFont_.size() < kMostFonts) charsetOfFont_[group().font] = parameter;
  } else if (word == "v") {
    flush();
    group().isHidden = token.parameter != 0;
  } else if (word == "nofpages") {
    if (parameter > 0) attributes_.setNumber("kMDItemNumberOfPages", parameter);
  } else if (group().destination == Destination::kCreated) {
    if (word == "yr") created_.year = parameter;
    if (word == "mo") created_.month = parameter;
    if (word == "dy") created_.day = parameter;
    if (word == "hr") created_.hour = parameter;
    if (word == "min") created_.minute = parameter;
  } else if (!destination(word)) {
    character(word);
  }
}

bool RtfReader::destination(std::string_view word) {
  const auto goTo = [&](Destination destination) {
    flush();
    property_.clear();
    group().destination = destination;
    return true;
  };
  const bool wasOptional = std::exchange(group().isOptional, false);
  if (group().destination == Destination::kHead) {
    if (word == "creatim") {
      created_ = {};
      return goTo(Destination::kCreated);
    }
    if (std::ranges::find(kProperties, word) == kProperties.end()) return false;
    group().property = word;
    return goTo(Destination::kProperty);
  }
  if (group().destination == Destination::kNowhere) return false;
  if (word == "fonttbl") return goTo(Destination::kFonts);
  if (word == "generator") return goTo(Destination::kGenerator);
  if (word == "info") return goTo(Destination::kHead);
  if (std::ranges::find(kNoText, word) != kNoText.end()) return goTo(Destination::kNowhere);
  static constexpr auto kOptionalTexts = std::to_array<std::string_view>({"shptxt", "shpinst"});
  if (wasOptional && std::ranges::find(kOptionalTexts, word) == kOptionalTexts.end()) {
    return goTo(Destination::kNowhere);
  }
  return false;
}

bool RtfReader::character(std::string_view word) {
  const auto* const found = std::ranges::find(kCharacters, word, &Character::word);
  if (found == kCharacters.end()) return false;
  if (toSkip_ > 0) {
    --toSkip_;
    return true;
  }
  flush();
  const bool isBody = group().destination == Destination::kBody && !group().isHidden;
  if (isBody && found->text == "\n") {
    text_.newLine();
  } else if (isBody && found->text == " ") {
    text_.space();
  } else {
    add(found->text);
  }
  return true;
}

void RtfReader::unicode(int number) {
  flush();
  // Numbers are of 16 bits, with a sign, and beyond them come as two halves.
  const auto unit = static_cast<char32_t>(static_cast<std::uint16_t>(number));
  std::string text;
  if (unit >= 0xD800 && unit < 0xDC00) {
    highHalf_ = unit;
  } else if (unit >= 0xDC00 && unit < 0xE000) {
    if (highHalf_) appendCodePoint(text, 0x10000 + ((*highHalf_ - 0xD800) << 10) + (unit - 0xDC00));
    highHalf_.reset();
  } else {
    highHalf_.reset();
    appendCodePoint(text, unit);
  }
  add(text);
  toSkip_ = group().fallbackLength;
}

void RtfReader::text(std::string_view bytes) {
  const std::size_t skipped = std::min(bytes.size(), static_cast<std::size_t>(toSkip_));
  toSkip_ -= static_cast<int>(skipped);
  bytes_ += bytes.substr(skipped);
}

void RtfReader::addByte(char byte) {
  if (toSkip_ > 0) {
    --toSkip_;
  } else {
    bytes_ += byte;
  }
}

void RtfReader::flush() {
  if (bytes_.empty()) return;
  const std::string bytes = std::exchange(bytes_, {});
  if (!groups_.empty()) add(isAscii(bytes) ? bytes : decodedText(bytes, charset()));
}

void RtfReader::add(std::string_view utf8) {
  switch (group().destination) {
    case Destination::kBody:
      if (!group().isHidden) text_.append(utf8);
      break;
    case Destination::kProperty:
    case Destination::kGenerator:
      if (property_.size() < kMostAttributeText) property_ += utf8;
      break;
    default:
      break;
  }
}

void RtfReader::keepProperty(const std::string& name) {
  const std::string value = std::exchange(property_, {});
  if (name == "title") attributes_.setText("kMDItemTitle", value);
  if (name == "author") attributes_.addTexts("kMDItemAuthors", value, ";");
  if (name == "operator") attributes_.addText("kMDItemEditors", value);
  if (name == "subject") attributes_.setText("kMDItemSubject", value);
  if (name == "keywords") attributes_.addTexts("kMDItemKeywords", value, ",;");
  if (name == "doccomm") attributes_.setText("kMDItemComment", value);
  if (name == "company") attributes_.addText("kMDItemOrganizations", value);
  if (name == "generator") {
    attributes_.setText("kMDItemCreator", value.substr(0, value.find(';')));
  }
}

std::string RtfReader::charset() const {
  const auto font = charsetOfFont_.find(groups_.back().font);
  const char* const named = font == charsetOfFont_.end() ? nullptr : charsetOf(font->second);
  if (named) return named;
  if (codePage_ == 10000) return "macintosh";
  if (codePage_ == 65001) return "utf-8";
  if (codePage_ >= 1250 && codePage_ <= 1258) return "windows-" + std::to_string(codePage_);
  return "cp" + std::to_string(codePage_);
}

}  // namespace vt
