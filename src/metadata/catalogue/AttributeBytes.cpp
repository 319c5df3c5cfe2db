#include "metadata/catalogue/AttributeBytes.h"

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

#include "foundation/Array.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

// Numbers are little endian in the catalogue and used as they are.
static_assert(std::endian::native == std::endian::little);

constexpr char kText = 't';
constexpr char kFalse = 'n';
constexpr char kTrue = 'y';
constexpr char kInteger = 'i';
constexpr char kUnsigned = 'u';
constexpr char kReal = 'r';
constexpr char kDate = 'd';
constexpr char kArray = 'a';

template <class Number>
std::string numberBytes(char kind, Number number) {
  std::string bytes(1 + sizeof number, kind);
  std::memcpy(bytes.data() + 1, &number, sizeof number);
  return bytes;
}

template <class Number>
std::optional<Number> numberIn(std::string_view bytes) {
  Number number;
  if (bytes.size() != sizeof number) return std::nullopt;
  bytes.copy(reinterpret_cast<char*>(&number), sizeof number);
  return number;
}

std::string scalarBytes(const Value& value) {
  if (const auto* text = value.get<std::string>()) return kText + displayText(*text);
  if (const auto* boolean = value.get<bool>()) return {*boolean ? kTrue : kFalse};
  if (const auto* integer = value.get<std::int64_t>()) return numberBytes(kInteger, *integer);
  if (const auto* number = value.get<std::uint64_t>()) return numberBytes(kUnsigned, *number);
  if (const auto* real = value.get<double>()) {
    return std::isnan(*real) ? std::string() : numberBytes(kReal, *real);
  }
  if (const auto* date = value.get<Date>()) {
    return numberBytes<std::int64_t>(kDate, date->time_since_epoch().count());
  }
  return {};
}

Value scalarIn(std::string_view bytes) {
  if (bytes.empty()) return {};
  const std::string_view rest = bytes.substr(1);
  switch (bytes.front()) {
    case kText:
      if (isValidUTF8(rest)) return rest;
      break;
    case kFalse:
    case kTrue:
      if (rest.empty()) return {bytes.front() == kTrue};
      break;
    case kInteger:
      if (const auto number = numberIn<std::int64_t>(rest)) return *number;
      break;
    case kUnsigned:
      if (const auto number = numberIn<std::uint64_t>(rest)) return *number;
      break;
    case kReal:
      if (const auto number = numberIn<double>(rest); number && !std::isnan(*number)) {
        return *number;
      }
      break;
    case kDate:
      if (const auto number = numberIn<std::int64_t>(rest)) {
        return Date{std::chrono::microseconds{*number}};
      }
      break;
    default:
      break;
  }
  return {};
}

std::string arrayBytes(const Array& array) {
  std::string bytes(1, kArray);
  for (const Value& element : array) {
    const std::string scalar = scalarBytes(element);
    if (scalar.empty()) return {};
    const auto size = static_cast<std::uint32_t>(scalar.size());
    bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
    bytes += scalar;
  }
  return bytes.size() > 1 ? bytes : std::string();
}

Value arrayIn(std::string_view bytes) {
  auto array = std::make_shared<Array>();
  while (!bytes.empty()) {
    const auto size = numberIn<std::uint32_t>(bytes.substr(0, sizeof(std::uint32_t)));
    if (!size) return {};
    bytes.remove_prefix(sizeof *size);
    Value element = scalarIn(bytes.substr(0, *size));
    if (*size > bytes.size() || element.isNull()) return {};
    array->append(std::move(element));
    bytes.remove_prefix(*size);
  }
  return !array->empty() ? Value(std::move(array)) : Value();
}

}  // namespace

std::string attributeBytes(const Value& value) {
  const std::shared_ptr<Array> array = value.array();
  return array ? arrayBytes(*array) : scalarBytes(value);
}

Value attributeValue(std::string_view bytes) {
  return bytes.starts_with(kArray) ? arrayIn(bytes.substr(1)) : scalarIn(bytes);
}

}  // namespace vt
