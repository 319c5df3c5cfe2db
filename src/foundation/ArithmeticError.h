#pragma once

#include <stdexcept>

namespace vt {

/// Raised where a prescribed calculation has no result: a division by zero, which would otherwise
/// end the process by a signal.
class ArithmeticError : public std::domain_error {
 public:
  using std::domain_error::domain_error;
};

}  // namespace vt
