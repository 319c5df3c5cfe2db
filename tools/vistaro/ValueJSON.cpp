#include "vistaro/ValueJSON.h"

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/PropertyListBase64.h"
#include "foundation/UTF8.h"
#include "vistaro/LocalTime.h"

namespace vt::tool {

using Json = nlohmann::ordered_json;

Json jsonOf(const Value& value) {
  switch (value.kind()) {
    case ValueKind::kBoolean:
      return *value.get<bool>();
    case ValueKind::kInteger:
      return *value.get<std::int64_t>();
    case ValueKind::kUnsignedInteger:
      return *value.get<std::uint64_t>();
    case ValueKind::kReal:
      return *value.get<double>();
    case ValueKind::kDate:
      return instantText(*value.get<Date>());
    case ValueKind::kString:
      return displayText(*value.get<std::string>());  // JSON text is UTF-8; a file name need not be
    case ValueKind::kArray: {
      Json elements = Json::array();
      for (const Value& element : *value.array()) elements.push_back(jsonOf(element));
      return elements;
    }
    case ValueKind::kDictionary: {
      Json entries = Json::object();
      for (const auto& [key, entry] : *value.dictionary()) {
        entries[displayText(key.str())] = jsonOf(entry);
      }
      return entries;
    }
    case ValueKind::kData: {
      std::string text;
      appendBase64(text, value.get<Data>()->bytes());
      return text;
    }
    case ValueKind::kNull:
    case ValueKind::kObject:
      break;
  }
  return nullptr;
}

}  // namespace vt::tool
