#include "platform/linux/HitOrder.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace vt {
namespace {

// What callers look at of a result; the order of the rest is not worth a check.
constexpr std::size_t kMostVisitedHits = 10'000;

/// The values of the sorting attributes of one hit, and pointers to them as comparators want them.
struct SortValues {
  std::vector<Value> values;
  std::vector<const Value*> pointers;
};

void tellSortValuesOf(std::size_t index, const std::vector<NamedAttribute>& sorting,
                      HitOrder::ValueOfHit valueOfHit, SortValues& result) {
  result.values.resize(sorting.size());
  result.pointers.clear();
  for (std::size_t i = 0; i < sorting.size(); ++i) {
    const bool isTold = valueOfHit(index, sorting[i], result.values[i]);
    // Elements stay where they are when the struct moves, since a vector hands over its storage.
    result.pointers.push_back(isTold ? &result.values[i] : nullptr);
  }
}

SortValues sortValuesOf(std::size_t index, const std::vector<NamedAttribute>& sorting,
                        HitOrder::ValueOfHit valueOfHit) {
  SortValues result;
  tellSortValuesOf(index, sorting, valueOfHit, result);
  return result;
}

}  // namespace

std::vector<NamedAttribute> namedAttributes(const std::vector<std::string>& names) {
  std::vector<NamedAttribute> attributes;
  attributes.reserve(names.size());
  for (const std::string& name : names) attributes.push_back({name, liveAttributeNamed(name)});
  return attributes;
}

bool HitOrder::isNewestFirst(std::size_t count, ValueOfHit valueOfHit) const {
  if (!declared || !declared->descending || sorting.size() != 1 ||
      liveAttributeNamed(declared->attribute) != LiveAttribute::kModificationDate) {
    return false;
  }
  const std::size_t visited = std::min(count, kMostVisitedHits);
  if (visited == 0) return true;
  SortValues before = sortValuesOf(0, sorting, valueOfHit);
  SortValues after;  // outside of the loop: two hits' values have room for those of all
  for (std::size_t i = 1; i < visited; ++i) {
    tellSortValuesOf(i, sorting, valueOfHit, after);
    // Only a negative answer means anything: two absent values give 1 either way round.
    if (comparator(after.pointers.data(), before.pointers.data(), comparatorContext) < 0) {
      return false;
    }
    std::swap(before, after);
  }
  return true;
}

std::optional<std::vector<std::size_t>> HitOrder::orderOfHits(std::size_t count,
                                                              ValueOfHit valueOfHit) const {
  if (comparator == nullptr || isNewestFirst(count, valueOfHit)) return std::nullopt;
  std::vector<SortValues> values;
  values.reserve(count);
  for (std::size_t i = 0; i < count; ++i) values.push_back(sortValuesOf(i, sorting, valueOfHit));
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
    return comparator(values[a].pointers.data(), values[b].pointers.data(), comparatorContext) < 0;
  });
  return order;
}

}  // namespace vt
