#include "foundation/Property.h"

#include <fmt/format.h>

namespace vt {

const Property* findProperty(std::span<const Property> table, std::string_view key) {
  for (const Property& property : table) {
    if (property.name == key) return &property;
  }
  return nullptr;
}

namespace property_detail {

void refuse(std::string_view key, const std::optional<Value>& value, std::string_view wanted) {
  throw InvalidArgumentError(fmt::format("the property \"{}\" takes {}, not {}", key, wanted,
                                         value ? describeKind(value->kind()) : "nil"));
}

bool isNil(const std::optional<Value>& value) { return !value || value->isNull(); }

}  // namespace property_detail
}  // namespace vt
