#include "extraction/FoundAttributes.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "foundation/Array.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

bool isBlank(char byte) { return static_cast<unsigned char>(byte) <= 0x20 || byte == 0x7F; }

}  // namespace

std::string tidiedText(std::string_view text) {
  std::string tidied;
  for (const char byte : text) {
    if (tidied.size() >= kMostAttributeText) break;
    if (!isBlank(byte)) {
      tidied += byte;
    } else if (!tidied.empty() && tidied.back() != ' ') {
      tidied += ' ';
    }
  }
  // What a bound has cut within a character is left out; other bytes that are no text are replaced.
  if (tidied.size() >= kMostAttributeText) {
    const std::size_t valid = validUTF8Length(tidied);
    if (tidied.size() - valid < 4) tidied.resize(valid);
  }
  if (!tidied.empty() && tidied.back() == ' ') tidied.pop_back();
  return displayText(tidied);
}

void FoundAttributes::set(std::string_view name, Value value) {
  extraction_.attributes.emplace(std::string(name), std::move(value));
}

void FoundAttributes::setText(std::string_view name, std::string_view text) {
  std::string tidied = tidiedText(text);
  if (!tidied.empty()) set(name, std::move(tidied));
}

void FoundAttributes::addText(std::string_view name, std::string_view text) {
  std::string tidied = tidiedText(text);
  if (!tidied.empty()) addValue(name, std::move(tidied));
}

void FoundAttributes::addTexts(std::string_view name, std::string_view text,
                               std::string_view separators) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(separators), text.size());
    addText(name, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void FoundAttributes::addValue(std::string_view name, const Value& value) {
  Value& values =
      extraction_.attributes.try_emplace(std::string(name), Array::make()).first->second;
  const std::shared_ptr<Array> array = values.array();
  if (!array || array->size() >= kMostAttributeValues ||
      std::ranges::find(array->elements(), value) != array->elements().end()) {
    return;
  }
  array->append(value);
}

void FoundAttributes::setInteger(std::string_view name, std::int64_t number) { set(name, number); }

void FoundAttributes::setReal(std::string_view name, double number) {
  if (std::isfinite(number)) set(name, number);
}

void FoundAttributes::setBoolean(std::string_view name, bool value) { set(name, value); }

void FoundAttributes::setDate(std::string_view name, const std::optional<Date>& date) {
  if (date) set(name, *date);
}

}  // namespace vt
