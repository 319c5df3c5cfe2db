#include "metadata/engine/NumberBounds.h"

#include <limits>

namespace vt {
namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

/// The first number that passes a test which all numbers after it pass too; nothing when none does.
/// Found by asking, so that how numbers of different kind compare is said in one place.
template <class Test>
std::optional<std::uint64_t> firstPassing(Test passes) {
  if (!passes(kMost)) return std::nullopt;
  std::uint64_t low = 0;
  std::uint64_t high = kMost;
  while (low < high) {
    const std::uint64_t middle = low + (high - low) / 2;
    if (passes(middle)) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return low;
}

}  // namespace

std::optional<NumberBounds> boundsOf(const query::NumberTest& test) {
  query::NumberTest low = test;
  low.high = Value();
  query::NumberTest high = test;
  high.low = Value();
  const auto first = firstPassing([&](std::uint64_t number) { return low(Value(number)); });
  const auto beyond = firstPassing([&](std::uint64_t number) { return !high(Value(number)); });
  if (!first || beyond == 0U) return std::nullopt;
  const std::uint64_t last = beyond ? *beyond - 1 : kMost;
  if (*first > last) return std::nullopt;
  return NumberBounds{*first, last};
}

}  // namespace vt
