#pragma once

#include <cstdint>
#include <optional>

namespace vt {

class VTUser;

/// Lets a process that runs as root act as `user` while the scope lives.
///
/// The user id is switched first and the group id second, each only where it differs, and refusals
/// are left to the identity service, which remembers them. At the end the user id is the old one
/// again, while the group id, where it changed, is set to the *user's* once more: a search leaves
/// the process in the group of whoever searched last.
///
/// Without a user, or in a process that is not root's, nothing is switched.
class UserIdentityScope {
 public:
  /// `user` is borrowed for the life of the scope, and may be nullptr.
  explicit UserIdentityScope(const VTUser* user);
  UserIdentityScope(const UserIdentityScope&) = delete;
  UserIdentityScope& operator=(const UserIdentityScope&) = delete;
  ~UserIdentityScope();

  /// Whether the process acts for the user by its identity, rather than for whoever runs it.
  bool actsForUser() const { return savedUserId_.has_value(); }

 private:
  const VTUser* user_;
  // Both or neither.
  std::optional<std::uint32_t> savedUserId_;
  std::optional<std::uint32_t> savedGroupId_;
};

}  // namespace vt
