#include "metadata/query/NumberLiteral.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace vt::query {

namespace {

template <class Number>
std::optional<Value> parseAs(std::string_view text) {
  Number number{};
  const char* first = text.data();
  const char* last = first + text.size();
  const auto [stop, error] = std::from_chars(first, last, number);
  if (error != std::errc() || stop != last) return std::nullopt;
  return Value(number);
}

}  // namespace

std::size_t lengthOfNumber(std::string_view text) {
  std::size_t at = 0;
  const auto takeSign = [&] {
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
  };
  const auto takeDigits = [&] {
    const std::size_t start = at;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
    return at > start;
  };
  takeSign();
  if (!takeDigits()) return 0;
  std::size_t length = at;
  if (at < text.size() && text[at] == '.') {
    ++at;
    if (takeDigits()) length = at;
  }
  at = length;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    takeSign();
    if (takeDigits()) length = at;
  }
  return length;
}

std::optional<Value> parseNumber(std::string_view text) {
  if (text.empty() || lengthOfNumber(text) != text.size()) return std::nullopt;
  if (text.front() == '+') text.remove_prefix(1);  // which from_chars does not know
  if (const auto integer = parseAs<std::int64_t>(text)) return integer;
  if (const auto large = parseAs<std::uint64_t>(text)) return large;
  if (const auto real = parseAs<double>(text)) return real;
  // Out of range is both too large and too small; the small ones are as good as 0.
  const std::size_t exponent = text.find_first_of("eE");
  const bool isTiny =
      exponent != std::string_view::npos && text.substr(exponent + 1).starts_with('-');
  if (isTiny) return Value(0.0);
  return std::nullopt;
}

}  // namespace vt::query
