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

  /// Whether the account called `name` may log in with a password at all: it is there, its password
  /// is not locked, and its days are not over. Without a look at any password.
  virtual bool isOpen(const std::string& name) const = 0;
};

}  // namespace vt
