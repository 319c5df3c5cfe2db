#include "metadata/query/QueryLexer.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

#include "foundation/UTF8.h"
#include "metadata/query/NumberLiteral.h"
#include "metadata/query/QueryParser.h"

namespace vt::query {

namespace {

constexpr std::size_t kExcerptBytes = 24;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isIdentifier(char c) { return isLetter(c) || isDigit(c) || c == '_'; }
bool isNameByte(char c) { return isIdentifier(c) || c == '.' || c == ':' || c == '-'; }

/// Whether the language has no use at all for what stands at `offset`, outside quotes.
bool isForeign(std::string_view text, std::size_t offset) {
  const std::string_view rest = text.substr(offset);
  const char c = rest.front();
  if ((static_cast<unsigned char>(c) & 0x80U) != 0)
    return !decodeCodePoint(text.substr(offset)).valid;
  if (isIdentifier(c) || isBlank(c)) return false;
  if (c == '&' || c == '|') return !rest.starts_with("&&") && !rest.starts_with("||");
  return std::string_view("\"'()[]!=<>*,.:/-+$").find(c) == std::string_view::npos;
}

std::string excerptAt(std::string_view text, std::size_t offset) {
  std::size_t end = offset;
  while (end < text.size()) {
    const std::size_t length = decodeCodePoint(text.substr(end)).length;
    if (end + length - offset > kExcerptBytes) break;
    end += length;
  }
  return std::string(text.substr(offset, end - offset));
}

std::optional<std::uint8_t> modifierOf(char letter) {
  switch (letter) {
    case 'c':
      return modifier::kCase;
    case 'd':
      return modifier::kDiacritics;
    case 'w':
      return modifier::kWords;
    case 't':
      return modifier::kTokens;
    case 's':
      return modifier::kSaved;
    default:
      return std::nullopt;
  }
}

constexpr std::string_view kModifierExpected = "one of the modifiers c, d, w, t, s";

}  // namespace

bool isWordByte(char byte) {
  return isNameByte(byte) || byte == '/' || (static_cast<unsigned char>(byte) & 0x80U) != 0;
}

void QueryLexer::fail(QueryErrorKind kind, std::size_t offset, std::string_view expected) {
  if (!error_) error_ = {kind, offset, std::string(expected), excerptAt(text_, offset)};
}

void QueryLexer::expect(std::string_view expected) {
  const bool isBadByte = !atEnd() && isForeign(text_, offset_);
  fail(isBadByte ? QueryErrorKind::kLexical : QueryErrorKind::kSyntax, offset_, expected);
}

void QueryLexer::skipBlanks() {
  while (!atEnd() && isBlank(text_[offset_])) ++offset_;
}

bool QueryLexer::take(std::string_view symbol) {
  if (!startsWith(symbol)) return false;
  offset_ += symbol.size();
  return true;
}

std::optional<std::string_view> QueryLexer::takeName() {
  const std::size_t start = offset_;
  if (take("**") || take("*")) return text_.substr(start, offset_ - start);
  if (!isLetter(peek()) && peek() != '_') return std::nullopt;
  while (!atEnd() && isNameByte(text_[offset_])) ++offset_;
  return text_.substr(start, offset_ - start);
}

std::optional<Operator> QueryLexer::takeOperator() {
  // The whole run of such characters must be one operator: `=<` is none, rather than `=` and more.
  const std::size_t end = std::min(text_.find_first_not_of("=<>!", offset_), text_.size());
  const std::string_view symbol = text_.substr(offset_, end - offset_);
  std::optional<Operator> found;
  if (symbol == "==" || symbol == "=") found = Operator::kEqual;
  if (symbol == "!=") found = Operator::kNotEqual;
  if (symbol == "<") found = Operator::kLess;
  if (symbol == ">") found = Operator::kGreater;
  if (symbol == "<=") found = Operator::kLessOrEqual;
  if (symbol == ">=") found = Operator::kGreaterOrEqual;
  if (found) offset_ = end;
  return found;
}

/// Letters up to `end`, or with no `end` as far as a word reaches.
bool QueryLexer::takeModifierLetters(char end, std::uint8_t& modifiers) {
  while (!atEnd() && text_[offset_] != end) {
    if (end == '\0' && !isIdentifier(text_[offset_])) return true;
    const std::optional<std::uint8_t> bit = modifierOf(text_[offset_]);
    if (!bit) {
      fail(QueryErrorKind::kValue, offset_, kModifierExpected);
      return false;
    }
    modifiers |= *bit;
    ++offset_;
  }
  return true;
}

std::uint8_t QueryLexer::takeBracketModifiers() {
  std::uint8_t modifiers = 0;
  if (!take("[")) return 0;
  if (startsWith("]")) {
    fail(QueryErrorKind::kValue, offset_, kModifierExpected);
  } else if (takeModifierLetters(']', modifiers) && !take("]")) {
    expect("a closing bracket");
  }
  return modifiers;
}

std::optional<Operand> QueryLexer::takeValue(std::uint8_t& modifiers) {
  if (peek() == '"' || peek() == '\'') return takeString(modifiers);
  if (peek() == '$') return takeTime();
  if (take("*")) return TextOperand{"*"};
  return takeWord();
}

std::optional<Operand> QueryLexer::takeString(std::uint8_t& modifiers) {
  const std::size_t open = offset_;
  const char quote = text_[offset_++];
  TextOperand text;
  std::size_t wildcards = 0;
  while (!atEnd() && text_[offset_] != quote) {
    const std::size_t start = offset_;
    const bool isEscaped = text_[offset_] == '\\';
    if (isEscaped && ++offset_ == text_.size()) break;
    const DecodedCodePoint character = decodeCodePoint(text_.substr(offset_));
    const char c = text_[offset_];
    if (!character.valid || (static_cast<unsigned char>(c) < 0x20 && !isBlank(c))) {
      fail(QueryErrorKind::kLexical, offset_,
           character.valid ? "no control character" : "valid UTF-8");
      return std::nullopt;
    }
    const bool isSpecial = c == '*' || c == '?' || c == '\\';
    if (isSpecial && !isEscaped && ++wildcards > kMaximumWildcards) {
      fail(QueryErrorKind::kLimit, start, "at most 64 wildcards in a string");
      return std::nullopt;
    }
    if (isSpecial && isEscaped) text.pattern += '\\';
    text.pattern += text_.substr(offset_, character.length);
    offset_ += character.length;
  }
  if (atEnd()) {
    fail(QueryErrorKind::kLexical, open, "a string that is closed");
    return std::nullopt;
  }
  ++offset_;
  if (!takeModifierLetters('\0', modifiers)) return std::nullopt;
  return text;
}

std::optional<Operand> QueryLexer::takeWord() {
  const std::size_t start = offset_;
  const std::size_t numberEnd = start + lengthOfNumber(rest());
  if (numberEnd > start && (numberEnd == text_.size() || !isWordByte(text_[numberEnd]))) {
    offset_ = numberEnd;
    return NumberOperand{std::string(text_.substr(start, offset_ - start))};
  }
  while (!atEnd() && isWordByte(text_[offset_])) {
    const DecodedCodePoint character = decodeCodePoint(text_.substr(offset_));
    if (!character.valid) {
      fail(QueryErrorKind::kLexical, offset_, "valid UTF-8");
      return std::nullopt;
    }
    offset_ += character.length;
  }
  if (offset_ == start) return std::nullopt;
  return TextOperand{std::string(text_.substr(start, offset_ - start))};
}

std::optional<Operand> QueryLexer::takeTime() {
  const std::size_t start = offset_;
  ++offset_;
  if (!take("time.")) {
    offset_ = start;
    fail(QueryErrorKind::kSyntax, start, "$time. and the name of a time");
    return std::nullopt;
  }
  const std::size_t nameStart = offset_;
  while (!atEnd() && isIdentifier(text_[offset_])) ++offset_;
  const std::string_view name = text_.substr(nameStart, offset_ - nameStart);
  const auto function = timeFunctionNamed(name);
  if (!function) {
    fail(QueryErrorKind::kValue, nameStart,
         "now, today, yesterday, tomorrow, iso, or this_, last_ or next_ with week, month or year");
    return std::nullopt;
  }
  TimeValue time;
  time.function = *function;
  const std::size_t afterName = offset_;
  skipBlanks();
  const std::size_t open = offset_;
  if (!take("(")) {
    offset_ = afterName;
    if (*function != TimeValue::Function::kIso) return time;
    fail(QueryErrorKind::kArity, afterName, "a date in parentheses");
    return std::nullopt;
  }
  if (*function == TimeValue::Function::kIso) {
    if (!takeIsoText(time, open)) return std::nullopt;
    return time;
  }
  skipBlanks();
  if (!startsWith(")") && !atEnd() && !takeTimeCount(time)) return std::nullopt;
  skipBlanks();
  if (!take(")")) {
    expect("a closing parenthesis");
    return std::nullopt;
  }
  return time;
}

bool QueryLexer::takeTimeCount(TimeValue& time) {
  const std::size_t start = offset_;
  if (!takesCount(time.function)) {
    fail(QueryErrorKind::kArity, start, "a closing parenthesis, since this time takes no number");
    return false;
  }
  if (peek() == '+' || peek() == '-') ++offset_;
  const std::size_t digits = offset_;
  while (isDigit(peek())) ++offset_;
  std::int64_t count = 0;
  const char* first = text_.data() + (text_[start] == '+' ? digits : start);
  const char* last = text_.data() + offset_;
  const auto [stop, error] = std::from_chars(first, last, count);
  if (offset_ == digits || error != std::errc() || stop != last) {
    fail(QueryErrorKind::kValue, start, "a whole number of at most 64 bits");
    return false;
  }
  time.count = count;
  if (isWordByte(peek())) {
    time.hasUnitLetter = time.function == TimeValue::Function::kToday && peek() == 'd';
    if (!time.hasUnitLetter) {
      fail(QueryErrorKind::kValue, offset_, "no unit; only today has one, d");
      return false;
    }
    ++offset_;
  }
  return true;
}

bool QueryLexer::takeIsoText(TimeValue& time, std::size_t open) {
  skipBlanks();
  const std::size_t start = offset_;
  const std::size_t close = text_.find(')', start);
  if (close == std::string_view::npos) {
    offset_ = text_.size();
    fail(QueryErrorKind::kSyntax, open, "a parenthesis that is closed");
    return false;
  }
  std::size_t end = close;
  while (end > start && isBlank(text_[end - 1])) --end;
  if (end == start) {
    fail(QueryErrorKind::kArity, start, "a date");
    return false;
  }
  time.iso = text_.substr(start, end - start);
  if (!parseIsoTime(time.iso, Calendar())) {
    fail(QueryErrorKind::kValue, start,
         "a date that exists, as YYYY-MM-DD or YYYY-MM-DDThh:mm:ssZ");
    return false;
  }
  offset_ = close + 1;
  return true;
}

}  // namespace vt::query
