#pragma once

#include <cstdint>

#include "foundation/Value.h"

namespace vt {

/// The context of dateAbleSortComparatorFunction().
struct DateAbleSortContext {
  std::int32_t dateIndex = 0;  ///< which of the sorting attributes goes newest first
  std::int32_t attributeCount = 0;
};

/// `dateAbleSortComparatorFunction`
/// Compares two hits by their sorting attributes in turn: ascending, but descending at the date
/// index, and absent values (nullptr) last in either direction. -1, 0 or 1; `context` is a
/// DateAbleSortContext.
///
/// Two absent values give 1 in either order: a sort must go by `< 0` alone, and be stable.
int dateAbleSortComparatorFunction(const Value* const a[], const Value* const b[],
                                   const void* context);

}  // namespace vt
