#include "extraction/ConformingTypes.h"

#include <cstddef>
#include <optional>

namespace vt {

ConformingTypes::ConformingTypes(const ContentTypes& types,
                                 std::initializer_list<std::string_view> identifiers,
                                 std::initializer_list<std::string_view> leftOut)
    : contains_(types.size()) {
  const auto setAll = [&](std::initializer_list<std::string_view> ancestors, bool isContained) {
    for (const std::string_view identifier : ancestors) {
      const std::optional<ContentTypeId> ancestor = types.find(identifier);
      for (std::size_t type = 0; ancestor && type < types.size(); ++type) {
        const auto id = static_cast<ContentTypeId>(type);
        if (types.conforms(id, *ancestor)) contains_[type] = isContained;
      }
    }
  };
  setAll(identifiers, /*isContained=*/true);
  setAll(leftOut, /*isContained=*/false);
}

}  // namespace vt
