#include "platform/linux/LinuxIdentity.h"

#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

#include "platform/GroupList.h"

namespace vt {
namespace {

// The last 32-bit number is no id: the kernel takes it for "leave as it is".
constexpr std::uint32_t kLeaveAsIs = std::numeric_limits<std::uint32_t>::max();

/// Sets the effective id alone, and believes it only when it is read back.
int setEffective(long setCall, long getCall, std::uint64_t id) {
  if (id >= kLeaveAsIs) {
    errno = EINVAL;
    return -1;
  }
  const auto wanted = static_cast<std::uint32_t>(id);
  if (syscall(setCall, kLeaveAsIs, wanted, kLeaveAsIs) != 0) return -1;
  return static_cast<std::uint32_t>(syscall(getCall)) == wanted ? 0 : -1;
}

}  // namespace

std::uint32_t LinuxIdentity::geteuid() const {
  return static_cast<std::uint32_t>(syscall(SYS_geteuid));
}

std::uint32_t LinuxIdentity::getegid() const {
  return static_cast<std::uint32_t>(syscall(SYS_getegid));
}

int LinuxIdentity::seteuid(std::uint64_t uid) {
  const int status = setEffective(SYS_setresuid, SYS_geteuid, uid);
  if (status == 0 || uid != 0) actsAsWanted_ = status == 0;
  return status;
}

int LinuxIdentity::setegid(std::uint64_t gid) {
  return setEffective(SYS_setresgid, SYS_getegid, gid);
}

int LinuxIdentity::getgrouplist(const std::string& name, std::int32_t baseGroup,
                                std::int32_t* groups, int* count) const {
  const auto base = static_cast<std::uint32_t>(baseGroup);
  std::vector<std::int32_t> all{baseGroup};
  for (const std::uint32_t group : groupsOf(name, base)) {
    const bool isSigned = group <= std::uint32_t{std::numeric_limits<std::int32_t>::max()};
    if (isSigned && group != base) all.push_back(static_cast<std::int32_t>(group));
  }
  return fillGroupList(all, groups, count);
}

std::vector<std::uint32_t> LinuxIdentity::groupsOf(const std::string& name,
                                                   std::uint32_t baseGroup) const {
  std::optional<Account> account = accounts_->accountNamed(name);
  if (!account) return {baseGroup};
  account->gid = baseGroup;
  return accounts_->groupsOf(*account);
}

std::vector<std::uint32_t> LinuxIdentity::getgroups() const {
  std::vector<std::uint32_t> groups;
  const long count = syscall(SYS_getgroups, 0, nullptr);
  if (count > 0) groups.resize(static_cast<std::size_t>(count));
  if (count > 0 && syscall(SYS_getgroups, count, groups.data()) != count) groups.clear();
  return groups;
}

int LinuxIdentity::setgroups(const std::vector<std::uint32_t>& groups) {
  if (syscall(SYS_setgroups, groups.size(), groups.data()) != 0) return -1;
  // The kernel keeps them sorted.
  std::vector<std::uint32_t> wanted = groups;
  std::vector<std::uint32_t> held = getgroups();
  std::ranges::sort(wanted);
  std::ranges::sort(held);
  return held == wanted ? 0 : -1;
}

}  // namespace vt
