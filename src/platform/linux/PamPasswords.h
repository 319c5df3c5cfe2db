#pragma once

#include <chrono>
#include <string>

#include "platform/linux/PasswordCheck.h"

namespace vt {

/// Passwords checked by PAM, authentication and account management, in a helper process.
///
/// The helper is a program of its own because modules are neither safe among threads nor free of
/// leaks. It runs with the rights of the calling thread: root gets an answer for everybody, anyone
/// else only for themselves. Without the service file everything is refused, so that the machine's
/// rules for unknown services never apply.
class PamPasswords final : public PasswordCheck {
 public:
  struct Options {
    std::string helper;  ///< absolute path; the installed helper when empty
    std::string service = "vistaro";
    std::chrono::milliseconds limit =
        std::chrono::seconds(15);  ///< by the wall clock; then refused
  };

  /// Where the helper program is unless Options name another; it need not be there.
  static std::string installedHelper();

  PamPasswords() : PamPasswords(Options()) {}
  explicit PamPasswords(Options options);

  /// Refuses as well when the helper cannot be started, dies, says anything but yes, or takes
  /// longer than the limit, in which case it is killed.
  bool verify(const std::string& name, const std::string& password) const override;

  /// As the shadow entry has it that the name service switch gives to root: locked by a "!", or
  /// closed by its date. Open without such an entry, for then others keep the password.
  bool isOpen(const std::string& name) const override;

 private:
  Options options_;
};

}  // namespace vt
