#pragma once

#include <memory>

#include "platform/Identity.h"
#include "platform/linux/Accounts.h"

namespace vt {

/// The identity of the calling thread.
///
/// The calls go to the kernel directly and change the calling thread alone; the C library's own
/// would change all threads, and must not be mixed with these. Whoever switches, switches back in
/// the same thread. Each thread that switches needs an object of its own.
class LinuxIdentity final : public Identity {
 public:
  /// Group lists come from `accounts`.
  explicit LinuxIdentity(std::shared_ptr<const Accounts> accounts)
      : accounts_(std::move(accounts)) {}

  std::uint32_t geteuid() const override;
  std::uint32_t getegid() const override;
  int seteuid(std::uint64_t uid) override;
  int setegid(std::uint64_t gid) override;
  bool actsAsWanted() const override { return actsAsWanted_; }
  /// A group with an id above 2,147,483,647 is left out: in a signed list it would be an end mark.
  int getgrouplist(const std::string& name, std::int32_t baseGroup, std::int32_t* groups,
                   int* count) const override;
  std::vector<std::uint32_t> groupsOf(const std::string& name,
                                      std::uint32_t baseGroup) const override;
  std::vector<std::uint32_t> getgroups() const override;
  int setgroups(const std::vector<std::uint32_t>& groups) override;

 private:
  std::shared_ptr<const Accounts> accounts_;
  bool actsAsWanted_ = true;
};

}  // namespace vt
