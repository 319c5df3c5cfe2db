#pragma once

#include <cstdint>
#include <random>

#include "foundation/Value.h"

namespace vt {

/// Makes trees that an XML property list can hold, from a seed: every kind of value, the edges of
/// each more often than chance would have them.
class RandomPropertyList {
 public:
  explicit RandomPropertyList(std::uint64_t seed) : random_(seed) {}

  /// A dictionary of some values, up to five containers deep.
  Value tree();

 private:
  Value value(int depth);
  std::uint64_t below(std::uint64_t end) { return random_() % end; }
  Value leaf();
  Value integer();
  double real();
  std::string text();

  std::mt19937_64 random_;
};

}  // namespace vt
