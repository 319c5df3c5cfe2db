#pragma once

#include <initializer_list>
#include <string_view>
#include <vector>

#include "metadata/types/ContentTypes.h"

namespace vt {

/// The types that an extractor takes: some and what conforms to them, others and what conforms to
/// those left out.
class TypesTaken {
 public:
  /// Types that the table lacks are passed over.
  TypesTaken(const ContentTypes& types, std::initializer_list<std::string_view> taken,
             std::initializer_list<std::string_view> leftOut = {}) {
    const auto isOneOf = [&](ContentTypeId type,
                             std::initializer_list<std::string_view> identifiers) {
      for (const std::string_view identifier : identifiers) {
        const std::optional<ContentTypeId> ancestor = types.find(identifier);
        if (ancestor && types.conforms(type, *ancestor)) return true;
      }
      return false;
    };
    for (std::size_t type = 0; type < types.size(); ++type) {
      const auto id = static_cast<ContentTypeId>(type);
      isTaken_.push_back(isOneOf(id, taken) && !isOneOf(id, leftOut));
    }
  }

  bool contains(ContentTypeId type) const { return type < isTaken_.size() && isTaken_[type]; }

 private:
  std::vector<bool> isTaken_;  // by type
};

}  // namespace vt
