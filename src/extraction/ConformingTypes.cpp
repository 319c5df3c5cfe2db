#include "extraction/ConformingTypes.h"

#include <cstddef>
#include <optional>

namespace vt {

ConformingTypes::ConformingTypes(const ContentTypes& types,
                                 std::initializer_list<std::string_view> identifiers)
    : contains_(types.size()) {
  for (const std::string_view identifier : identifiers) {
    const std::optional<ContentTypeId> ancestor = types.find(identifier);
    for (std::size_t type = 0; ancestor && type < types.size(); ++type) {
      const auto id = static_cast<ContentTypeId>(type);
      if (types.conforms(id, *ancestor)) contains_[type] = true;
    }
  }
}

}  // namespace vt
