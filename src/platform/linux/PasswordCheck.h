#pragma once

#include <string>

namespace vt {

/// The system's verdict on passwords.
class PasswordCheck {
 public:
  virtual ~PasswordCheck() = default;

  /// Whether `password` is that of the account called `name` and the account may be used now. An
  /// empty text, and one that holds a NUL, is refused.
  virtual bool verify(const std::string& name, const std::string& password) const = 0;
};

}  // namespace vt
