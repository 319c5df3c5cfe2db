#include "search/DateAbleSortComparator.h"

namespace vt {

int dateAbleSortComparatorFunction(const Value* const a[], const Value* const b[],
                                   const void* context) {
  const auto& sort = *static_cast<const DateAbleSortContext*>(context);
  for (std::int32_t i = 0; i < sort.attributeCount; ++i) {
    if (!a[i]) return 1;
    if (!b[i]) return -1;
    const int order =
        i == sort.dateIndex ? compareNaturally(*b[i], *a[i]) : compareNaturally(*a[i], *b[i]);
    if (order != 0) return order;
  }
  return 0;
}

}  // namespace vt
