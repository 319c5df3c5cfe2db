#pragma once

#include <initializer_list>
#include <string_view>
#include <vector>

#include "metadata/types/ContentTypes.h"

namespace vt {

/// The types that conform to any of some, but for those that conform to any of others.
class ConformingTypes {
 public:
  /// Identifiers that the table does not have are passed over.
  ConformingTypes(const ContentTypes& types, std::initializer_list<std::string_view> identifiers,
                  std::initializer_list<std::string_view> leftOut = {});

  bool contains(ContentTypeId type) const { return type < contains_.size() && contains_[type]; }

 private:
  std::vector<bool> contains_;
};

}  // namespace vt
