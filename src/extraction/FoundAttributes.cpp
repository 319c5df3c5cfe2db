#include "extraction/FoundAttributes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "foundation/Array.h"
#include "foundation/TextDecoding.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

// What a double counts without gaps.
constexpr double kMostExactInteger = 9007199254740992.0;

bool isBlank(char byte) { return static_cast<unsigned char>(byte) <= 0x20 || byte == 0x7F; }

}  // namespace

std::string asUtf8(std::string_view text) {
  if (isValidUTF8(text)) return std::string(text);
  // With something behind it, or a last letter would be taken for half a character.
  std::string decoded = decodePlainText(std::string(text) + ' ');
  if (decoded.ends_with(' ')) decoded.pop_back();  // else it was half a unit of a wide form
  return decoded;
}

std::string tidiedText(std::string_view text) {
  std::string tidied;
  for (const char byte : asUtf8(text)) {
    if (tidied.size() > kMostAttributeText) break;
    if (!isBlank(byte)) {
      tidied += byte;
    } else if (!tidied.empty() && tidied.back() != ' ') {
      tidied += ' ';
    }
  }
  if (tidied.size() > kMostAttributeText) {
    tidied.resize(kMostAttributeText);
    tidied.resize(validUTF8Length(tidied));
  }
  if (!tidied.empty() && tidied.back() == ' ') tidied.pop_back();
  return tidied;
}

void FoundAttributes::setText(std::string_view name, std::string_view text) {
  if (has(name)) return;
  std::string tidied = tidiedText(text);
  if (!tidied.empty()) values_.emplace(name, std::move(tidied));
}

void FoundAttributes::addText(std::string_view name, std::string_view text) {
  Value value = tidiedText(text);
  if (value.get<std::string>()->empty()) return;
  const auto found = values_.find(std::string(name));
  if (found == values_.end()) {
    values_.emplace(name, Array::make({std::move(value)}));
    return;
  }
  const std::shared_ptr<Array> list = found->second.array();
  const bool isKnown =
      !list || std::ranges::find(list->elements(), value) != list->elements().end();
  if (!isKnown && list->size() < kMostAttributeValues) list->append(std::move(value));
}

void FoundAttributes::addTexts(std::string_view name, std::string_view text,
                               std::string_view separators) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(separators), text.size());
    addText(name, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void FoundAttributes::setNumber(std::string_view name, double number) {
  if (has(name) || !std::isfinite(number)) return;
  const bool isInteger = std::trunc(number) == number && std::abs(number) <= kMostExactInteger;
  values_.emplace(name, isInteger ? Value(static_cast<std::int64_t>(number)) : Value(number));
}

void FoundAttributes::setBoolean(std::string_view name, bool boolean) {
  if (!has(name)) values_.emplace(name, boolean);
}

void FoundAttributes::setDate(std::string_view name, const std::optional<Date>& date) {
  if (date && !has(name)) values_.emplace(name, *date);
}

}  // namespace vt
