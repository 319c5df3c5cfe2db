#include "extraction/ExtractionBytes.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "extraction/ByteReader.h"
#include "extraction/FoundAttributes.h"
#include "foundation/Array.h"
#include "foundation/UTF8.h"
#include "metadata/catalogue/AttributeBytes.h"
#include "metadata/live/LiveAttribute.h"

namespace vt {
namespace {

using query::AttributeType;

// Of why nothing was found: people read it.
constexpr std::size_t kMostReason = 512;

constexpr char kFailure = 'F';
constexpr char kWithoutText = 'N';
constexpr char kWithText = 'T';

bool isOf(AttributeType type, const Value& value) {
  switch (type) {
    case AttributeType::kString:
      return value.kind() == ValueKind::kString;
    case AttributeType::kNumber:
      return value.isNumber() && value.kind() != ValueKind::kBoolean;
    case AttributeType::kDate:
      return value.kind() == ValueKind::kDate;
    case AttributeType::kBoolean:
      return value.kind() == ValueKind::kBoolean;
  }
  return false;
}

bool isOf(const query::Attribute& attribute, const Value& value) {
  const std::shared_ptr<Array> array = value.array();
  if (!attribute.isMultiValued) return !array && isOf(attribute.type, value);
  return array && std::ranges::all_of(array->elements(), [&](const Value& element) {
           return isOf(attribute.type, element);
         });
}

std::optional<ExtractionFailure> failureIn(ByteReader bytes) {
  using Kind = ExtractionFailure::Kind;
  const auto kind = bytes.number<std::uint8_t>();
  if (!kind) return std::nullopt;
  for (const Kind known : {Kind::kUnreadable, Kind::kMalformed, Kind::kTooLarge, Kind::kTimedOut}) {
    if (*kind == static_cast<std::uint8_t>(known)) {
      // Not cut within a character.
      const std::string_view reason = bytes.rest().substr(0, kMostReason);
      return ExtractionFailure{known, tidiedText(reason.substr(0, validUTF8Length(reason)))};
    }
  }
  return std::nullopt;
}

}  // namespace

std::string extractionBytes(const Result<Extraction, ExtractionFailure>& found) {
  std::string bytes;
  if (!found) {
    bytes += kFailure;
    appendNumber(bytes, static_cast<std::uint8_t>(found.error().kind));
    return bytes + found.error().reason;
  }
  bytes += found->text ? kWithText : kWithoutText;
  if (found->text) {
    // What is left of a character that this cuts is no text.
    std::string_view text = std::string_view(*found->text).substr(0, kMostExtractedText);
    text = text.substr(0, validUTF8Length(text));
    appendNumber(bytes, static_cast<std::uint32_t>(text.size()));
    bytes += text;
  }
  for (const auto& [name, value] : found->attributes) {
    const std::string written = attributeBytes(value);
    if (written.empty()) continue;
    appendNumber(bytes, static_cast<std::uint16_t>(name.size()));
    bytes += name;
    appendNumber(bytes, static_cast<std::uint32_t>(written.size()));
    bytes += written;
  }
  return bytes;
}

std::optional<Result<Extraction, ExtractionFailure>> extractionIn(
    std::string_view bytes, const query::AttributeSchema& schema) {
  ByteReader reader(bytes);
  const auto kind = reader.number<char>();
  if (kind == kFailure) {
    const std::optional<ExtractionFailure> failure = failureIn(reader);
    if (!failure) return std::nullopt;
    return Result<Extraction, ExtractionFailure>(*failure);
  }
  if (kind != kWithText && kind != kWithoutText) return std::nullopt;
  Extraction extraction;
  if (kind == kWithText) {
    const auto text = reader.sized<std::uint32_t>();
    if (!text || text->size() > kMostExtractedText || !isValidUTF8(*text)) return std::nullopt;
    extraction.text = *text;
  }
  while (!reader.rest().empty()) {
    const auto name = reader.sized<std::uint16_t>();
    const auto written = name ? reader.sized<std::uint32_t>() : std::nullopt;
    if (!written) return std::nullopt;
    Value value = attributeValue(*written);
    if (value.isNull()) return std::nullopt;
    const query::Attribute* attribute = schema.find(*name);
    const bool isToldByStatus = liveAttributeNamed(*name) && !maySomethingInFilesReplace(*name);
    if (!attribute || isToldByStatus || !isOf(*attribute, value)) continue;
    extraction.attributes.emplace(std::string(*name), std::move(value));
  }
  return Result<Extraction, ExtractionFailure>(std::move(extraction));
}

}  // namespace vt
