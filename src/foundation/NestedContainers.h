#pragma once

#include <vector>

#include "foundation/Value.h"

namespace vt {

/// The containers that a container is to take with it, freed one after the other: a destructor that
/// left it to theirs would need stack for each level of what is nested.
class NestedContainers {
 public:
  NestedContainers() = default;
  NestedContainers(const NestedContainers&) = delete;
  NestedContainers& operator=(const NestedContainers&) = delete;
  ~NestedContainers();

  /// Takes `value` out of its container if it is the last holder of one that holds something.
  void take(Value& value) noexcept;

 private:
  std::vector<Value> pending_;
};

}  // namespace vt
