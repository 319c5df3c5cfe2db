#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "metadata/types/ContentTypes.h"

namespace vt {

/// The numbers that clients write for kinds of items ("_kMDItemGroupId = 13" asks for images), by
/// type. Reckoned once for a table, so asking costs a look-up.
class ResultGroups {
 public:
  explicit ResultGroups(const ContentTypes& types);

  /// The number of the group of items of `type`; nothing for a group that has no number.
  std::optional<std::int64_t> numberOf(ContentTypeId type) const { return numbers_[type]; }

 private:
  std::vector<std::optional<std::int64_t>> numbers_;  // by type id
};

}  // namespace vt
