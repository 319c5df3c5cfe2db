#include "support/PropertyListTesting.h"

#include <fmt/format.h>

#include <bit>
#include <cmath>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

std::string dumpText(std::string_view text) {
  std::string dumped = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = byte >= 0x20 && byte < 0x7F && c != '"' && c != '\\';
    dumped += plain ? std::string(1, c) : fmt::format("\\x{:02x}", byte);
  }
  return dumped + "\"";
}

}  // namespace

std::string dump(const Value& value) {
  switch (value.kind()) {
    case ValueKind::kNull:
      return "null";
    case ValueKind::kBoolean:
      return *value.get<bool>() ? "true" : "false";
    case ValueKind::kInteger:
      return fmt::format("i{}", *value.get<std::int64_t>());
    case ValueKind::kUnsignedInteger:
      return fmt::format("i{}", *value.get<std::uint64_t>());
    case ValueKind::kReal: {
      const double real = *value.get<double>();
      return std::isnan(real) ? "rnan"
                              : fmt::format("r{:016x}", std::bit_cast<std::uint64_t>(real));
    }
    case ValueKind::kDate:
      return fmt::format("d{}", value.get<Date>()->time_since_epoch().count());
    case ValueKind::kString:
      return "s" + dumpText(*value.get<std::string>());
    case ValueKind::kData: {
      std::string dumped = "x";
      for (const std::uint8_t byte : value.get<Data>()->bytes()) {
        dumped += fmt::format("{:02x}", byte);
      }
      return dumped;
    }
    case ValueKind::kArray: {
      std::string dumped = "[";
      for (const Value& element : *value.array()) {
        dumped += (dumped.size() > 1 ? "," : "") + dump(element);
      }
      return dumped + "]";
    }
    case ValueKind::kDictionary: {
      std::string dumped = "{";
      for (const auto& [key, element] : *value.dictionary()) {
        dumped += (dumped.size() > 1 ? "," : "") + dumpText(key.str()) + ":" + dump(element);
      }
      return dumped + "}";
    }
    case ValueKind::kObject:
      return "object";
  }
  return "?";
}

std::string_view nameOf(PropertyListErrorKind kind) {
  switch (kind) {
    case PropertyListErrorKind::kSyntax:
      return "syntax";
    case PropertyListErrorKind::kTruncated:
      return "truncated";
    case PropertyListErrorKind::kStructure:
      return "structure";
    case PropertyListErrorKind::kInvalidValue:
      return "value";
    case PropertyListErrorKind::kInvalidText:
      return "text";
    case PropertyListErrorKind::kUnsupported:
      return "unsupported";
    case PropertyListErrorKind::kTooDeep:
      return "deep";
    case PropertyListErrorKind::kTooLarge:
      return "large";
    case PropertyListErrorKind::kTooManyObjects:
      return "many";
  }
  return "?";
}

std::string outcome(const Result<Value, PropertyListError>& result) {
  if (result) return dump(*result);
  const PropertyListError& error = result.error();
  return fmt::format("{} {}:{}", nameOf(error.kind), error.line, error.offset);
}

std::string fromHex(std::string_view digits) {
  std::string bytes;
  std::string pair;
  for (const char c : digits) {
    if (c == ' ') continue;
    pair.push_back(c);
    if (pair.size() < 2) continue;
    bytes.push_back(static_cast<char>(std::stoi(pair, nullptr, 16)));
    pair.clear();
  }
  return bytes;
}

std::string binaryPropertyList(const std::vector<std::string>& objectsInHex) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string& object : objectsInHex) {
    offsets.push_back(static_cast<char>(bytes.size() >> 8));
    offsets.push_back(static_cast<char>(bytes.size()));
    bytes += fromHex(object);
  }
  const std::size_t table = bytes.size();
  return bytes + offsets +
         fromHex(fmt::format("000000000000 02 01 {:016x} {:016x} {:016x}", objectsInHex.size(), 0,
                             table));
}

Value nestedArrays(int depth) {
  auto root = Array::make();
  auto innermost = root;
  for (int i = 1; i < depth; ++i) {
    auto next = Array::make();
    innermost->append(next);
    innermost = next;
  }
  return root;
}

}  // namespace vt
