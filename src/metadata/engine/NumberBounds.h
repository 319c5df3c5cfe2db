#pragma once

#include <cstdint>
#include <optional>

#include "metadata/query/ValueTest.h"

namespace vt {

/// The whole numbers from `first` to `last`, both included.
struct NumberBounds {
  std::uint64_t first;
  std::uint64_t last;

  bool contain(std::uint64_t number) const { return number >= first && number <= last; }
};

/// The unsigned numbers that pass the test; nothing when none does.
std::optional<NumberBounds> boundsOf(const query::NumberTest& test);

}  // namespace vt
