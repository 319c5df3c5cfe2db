#include "platform/memory/MemoryIdentity.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>

#include "platform/GroupList.h"

namespace vt {
namespace {

// The last 32-bit number is no id: calls take it for "leave as it is".
constexpr std::uint64_t kHighestId = std::numeric_limits<std::uint32_t>::max() - 1;

}  // namespace

void MemoryIdentity::record(std::string call) {
  if (whenSwitching_) whenSwitching_(call);
  calls_.push_back(std::move(call));
}

bool MemoryIdentity::allowsUser(std::uint64_t uid) const {
  if (refusedUsers_.contains(uid)) return false;
  if (rules_ == Rules::kLenient) return true;
  return uid <= kHighestId && (euid_ == 0 || uid == 0 || uid == euid_);
}

bool MemoryIdentity::allowsGroup(std::uint64_t gid) const {
  if (refusedGroups_.contains(gid)) return false;
  if (rules_ == Rules::kLenient) return true;
  return gid <= kHighestId && (euid_ == 0 || gid == 0 || gid == egid_);
}

int MemoryIdentity::seteuid(std::uint64_t uid) {
  record("seteuid " + std::to_string(uid));
  const bool allowed = allowsUser(uid);
  if (allowed) euid_ = static_cast<std::uint32_t>(uid);
  if (allowed || uid != 0) actsAsWanted_ = allowed;
  return allowed ? 0 : -1;
}

int MemoryIdentity::setegid(std::uint64_t gid) {
  record("setegid " + std::to_string(gid));
  if (!allowsGroup(gid)) return -1;
  egid_ = static_cast<std::uint32_t>(gid);
  return 0;
}

int MemoryIdentity::getgrouplist(const std::string& name, std::int32_t baseGroup,
                                 std::int32_t* groups, int* count) const {
  return fillGroupList(listedGroups(name, baseGroup), groups, count);
}

std::vector<std::int32_t> MemoryIdentity::listedGroups(const std::string& name,
                                                       std::int32_t baseGroup) const {
  std::vector<std::int32_t> all{baseGroup};
  if (const auto found = groups_.find(name); found != groups_.end()) {
    std::ranges::copy_if(found->second, std::back_inserter(all),
                         [&](std::int32_t group) { return group != baseGroup; });
  }
  return all;
}

std::vector<std::uint32_t> MemoryIdentity::groupsOf(const std::string& name,
                                                    std::uint32_t baseGroup) const {
  const std::vector<std::int32_t> all = listedGroups(name, static_cast<std::int32_t>(baseGroup));
  return {all.begin(), all.end()};
}

int MemoryIdentity::setgroups(const std::vector<std::uint32_t>& groups) {
  record(fmt::format("setgroups {}", fmt::join(groups, ",")));
  if (refusesGroupLists_ || (rules_ == Rules::kStrict && euid_ != 0)) return -1;
  heldGroups_ = groups;
  return 0;
}

}  // namespace vt
