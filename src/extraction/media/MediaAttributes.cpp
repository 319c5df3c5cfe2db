#include "extraction/media/MediaAttributes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/Array.h"
#include "foundation/TextDecoding.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

// Longer ones are no titles or comments but somebody's data.
constexpr std::size_t kMostTextBytes = std::size_t{32} * 1024;
constexpr std::size_t kMostElements = 1000;
// What a double counts without gaps.
constexpr double kMostExactInteger = 9007199254740992.0;

bool isBlank(char c) { return c == '\0' || c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

std::string utf8OrLatin1(std::string_view text) {
  if (isValidUTF8(text)) return std::string(text);
  // With something behind it, or a last letter would be taken for half a character.
  std::string decoded = decodePlainText(std::string(text) + ' ');
  decoded.pop_back();
  return decoded;
}

std::string attributeText(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  std::string decoded = utf8OrLatin1(text);
  // Fields of fixed width are filled up with zeros, and some hold lines one behind the other.
  std::ranges::replace(decoded, '\0', ' ');
  if (decoded.size() > kMostTextBytes) {
    decoded.resize(kMostTextBytes);
    decoded.resize(validUTF8Length(decoded));
  }
  return decoded;
}

void MediaAttributes::setText(std::string_view name, std::string_view text) {
  if (has(name)) return;
  std::string value = attributeText(text);
  if (!value.empty()) values_.emplace(name, std::move(value));
}

void MediaAttributes::addText(std::string_view name, std::string_view text) {
  Value value = attributeText(text);
  if (value.get<std::string>()->empty()) return;
  const auto found = values_.find(std::string(name));
  if (found == values_.end()) {
    values_.emplace(name, Array::make({std::move(value)}));
    return;
  }
  const std::shared_ptr<Array> list = found->second.array();
  const bool isKnown = std::ranges::find(list->elements(), value) != list->end();
  if (!isKnown && list->size() < kMostElements) list->append(std::move(value));
}

void MediaAttributes::setNumber(std::string_view name, double number) {
  if (has(name) || !std::isfinite(number)) return;
  const bool isInteger = std::trunc(number) == number && std::abs(number) <= kMostExactInteger;
  values_.emplace(name, isInteger ? Value(static_cast<std::int64_t>(number)) : Value(number));
}

void MediaAttributes::addTexts(std::string_view name, std::string_view text,
                               std::string_view separators) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(separators), text.size());
    addText(name, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void MediaAttributes::setDate(std::string_view name, const std::optional<Date>& date) {
  if (date && !has(name)) values_.emplace(name, *date);
}

void MediaAttributes::setBoolean(std::string_view name, bool boolean) {
  if (!has(name)) values_.emplace(name, boolean);
}

}  // namespace vt
