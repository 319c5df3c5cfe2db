#include "vistaro/ValueText.h"

#include <fmt/format.h>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "vistaro/LocalTime.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

std::string textOf(Date date) {
  const std::optional<std::tm> local = localTime(date);
  if (!local) return "-";
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", local->tm_year + 1900,
                     local->tm_mon + 1, local->tm_mday, local->tm_hour, local->tm_min,
                     local->tm_sec);
}

}  // namespace

std::string textOf(const Value& value) {
  switch (value.kind()) {
    case ValueKind::kBoolean:
      return value.boolValue() ? "yes" : "no";
    case ValueKind::kInteger:
      return std::to_string(*value.get<std::int64_t>());
    case ValueKind::kUnsignedInteger:
      return std::to_string(*value.get<std::uint64_t>());
    case ValueKind::kReal:
      return fmt::format("{}", *value.get<double>());
    case ValueKind::kDate:
      return textOf(*value.get<Date>());
    case ValueKind::kString:
      return printable(*value.get<std::string>());
    case ValueKind::kData:
      return fmt::format("{} bytes", value.get<Data>()->bytes().size());
    case ValueKind::kArray: {
      std::string text;
      for (const Value& element : *value.array()) {
        text += (text.empty() ? "" : ", ") + textOf(element);
      }
      return text;
    }
    case ValueKind::kDictionary: {
      std::string text;
      for (const auto& [key, entry] : *value.dictionary()) {
        text +=
            fmt::format("{}{}: {}", text.empty() ? "" : ", ", printable(key.str()), textOf(entry));
      }
      return text;
    }
    case ValueKind::kNull:
    case ValueKind::kObject:
      break;
  }
  return "-";
}

}  // namespace vt::tool
