#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/live/LiveAttribute.h"
#include "platform/MetadataIndex.h"

namespace vt {

/// An attribute as a caller names it, and what that is here.
struct NamedAttribute {
  std::string name;
  std::optional<LiveAttribute> attribute;  ///< nothing when it can only stand in files
};

std::vector<NamedAttribute> namedAttributes(const std::vector<std::string>& names);

/// The order that the maker of a query asked its hits to be in.
struct HitOrder {
  std::vector<NamedAttribute> sorting;
  MDQuerySortComparatorFunction comparator = nullptr;
  const void* comparatorContext = nullptr;
  std::optional<MDQueryDeclaredOrder> declared;

  /// Puts the value of a sorting attribute of the hit at `index` into `value`; false when it has
  /// none.
  using ValueOfHit =
      FunctionRef<bool(std::size_t index, const NamedAttribute& attribute, Value& value)>;

  /// Of `count` hits, newest modification first: the order that they are to be in, as one index for
  /// each place; nothing when they are in it already. When none is asked for, or when it is
  /// declared to be newest first and the comparator finds the first 10,000 hits to be so, they are.
  std::optional<std::vector<std::size_t>> orderOfHits(std::size_t count,
                                                      ValueOfHit valueOfHit) const;

 private:
  bool isNewestFirst(std::size_t count, ValueOfHit valueOfHit) const;
};

}  // namespace vt
