#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vt {

class Identity;

/// The account that somebody acts as.
struct ActingAccount {
  std::string name;  ///< its login name, by which its further groups are found
  std::uint64_t uid = 0;
  std::uint64_t gid = 0;  ///< its primary group
};

/// Lets the calling thread of a process of root's act as an account while it lives: what is opened
/// meanwhile is opened with that account's rights, as the kernel sees them.
///
/// Groups first, then the group id, then the user id, each made sure of; and back the other way.
/// A way back that is refused, or that memory does not suffice for, ends the process: going on
/// would act as somebody else. To be destroyed in the thread that made it. What is done meanwhile
/// should be short: open, and read on afterwards.
class ActingAs {
 public:
  /// `identity` is borrowed, and must be acting as user 0. Asks the directory for the groups.
  ActingAs(Identity& identity, const ActingAccount& account);
  ActingAs(const ActingAs&) = delete;
  ActingAs& operator=(const ActingAs&) = delete;
  ~ActingAs();

  /// False when the system refused any part of the account. The thread then acts as before, and
  /// nothing must be opened on behalf of the account.
  bool isInForce() const { return isInForce_; }

 private:
  bool takeOn(const ActingAccount& account, const std::vector<std::uint32_t>& groups) noexcept;
  void giveBack() noexcept;

  Identity& identity_;
  // As it was before.
  std::uint32_t uid_;
  std::uint32_t gid_;
  std::vector<std::uint32_t> groups_;

  bool isInForce_;
};

}  // namespace vt
