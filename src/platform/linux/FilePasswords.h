#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/linux/PasswordCheck.h"

namespace vt {

/// The dates of one line of a shadow file, in days since 1970; kUnset where the field is empty.
struct PasswordDates {
  static constexpr std::int64_t kUnset = -1;

  std::int64_t lastChange = kUnset;     ///< 0 = the password must be changed
  std::int64_t maximumAge = kUnset;     ///< days until the password must be changed
  std::int64_t accountExpiry = kUnset;  ///< the first day on which the account is closed
};

/// Whether an account with these dates may be used on the day `today`.
bool mayBeUsed(const PasswordDates& dates, std::int64_t today);

/// Passwords of the files "etc/passwd" and "etc/shadow" under the folder `root`, with the hashes
/// and the dates that the system itself uses. An account whose password is to be changed is
/// refused.
class FilePasswords final : public PasswordCheck {
 public:
  using Today = std::function<std::int64_t()>;

  /// `today` gives the day since 1970; the system's clock when it is not given.
  explicit FilePasswords(std::string root, Today today = nullptr);

  bool verify(const std::string& name, const std::string& password) const override;
  bool isOpen(const std::string& name) const override;

 private:
  std::string root_;
  Today today_;
};

}  // namespace vt
