#include "extraction/documents/RtfTokens.h"

#include <algorithm>

namespace vt {
namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::optional<int> hexDigit(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return std::nullopt;
}

}  // namespace

RtfToken RtfTokens::next() {
  while (!rest_.empty() && (rest_.front() == '\n' || rest_.front() == '\r')) {
    rest_.remove_prefix(1);
  }
  if (rest_.empty()) return {};
  const char first = rest_.front();
  if (first == '{' || first == '}') {
    rest_.remove_prefix(1);
    return {first == '{' ? RtfToken::Kind::kOpen : RtfToken::Kind::kClose, {}, {}};
  }
  if (first == '\\') {
    rest_.remove_prefix(1);
    return control();
  }
  const std::size_t end = std::min(rest_.find_first_of("{}\\\r\n"), rest_.size());
  const RtfToken token{RtfToken::Kind::kText, rest_.substr(0, end), {}};
  rest_.remove_prefix(end);
  return token;
}

RtfToken RtfTokens::control() {
  if (rest_.empty()) return {};
  if (isLetter(rest_.front())) return word();
  if (rest_.front() == '\'' && rest_.size() >= 3) {
    const std::optional<int> high = hexDigit(rest_[1]);
    const std::optional<int> low = hexDigit(rest_[2]);
    if (high && low) {
      rest_.remove_prefix(3);
      return {RtfToken::Kind::kByte, {}, *high * 16 + *low};
    }
  }
  const RtfToken token{RtfToken::Kind::kControl, rest_.substr(0, 1), {}};
  rest_.remove_prefix(1);
  return token;
}

RtfToken RtfTokens::word() {
  const auto* const end = std::ranges::find_if_not(rest_, isLetter);
  RtfToken token{
      RtfToken::Kind::kControl, rest_.substr(0, static_cast<std::size_t>(end - rest_.begin())), {}};
  rest_.remove_prefix(token.text.size());
  const bool isNegative = rest_.size() > 1 && rest_[0] == '-' && isDigit(rest_[1]);
  if (isNegative) rest_.remove_prefix(1);
  while (!rest_.empty() && isDigit(rest_.front())) {
    constexpr int kMost = 100'000'000;  // none is longer
    token.parameter = std::min(token.parameter.value_or(0) * 10 + (rest_.front() - '0'), kMost);
    rest_.remove_prefix(1);
  }
  if (isNegative && token.parameter) token.parameter = -*token.parameter;
  if (rest_.starts_with(' ')) rest_.remove_prefix(1);
  return token;
}

}  // namespace vt
