#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/Identity.h"

namespace vt {

/// An identity that nobody has: it writes down each switch and follows the rules that it is given.
class MemoryIdentity final : public Identity {
 public:
  /// How much the system allows.
  enum class Rules {
    kLenient,  ///< every switch succeeds
    kStrict,   ///< as a process with real ids 0: an effective user other than 0 may go back to 0 or
               ///< stay, and may set its effective group only to the real, saved or current one (0)
  };

  explicit MemoryIdentity(Rules rules = Rules::kLenient) : rules_(rules) {}

  void setIds(std::uint32_t euid, std::uint32_t egid) {
    euid_ = euid;
    egid_ = egid;
  }
  /// The group list of the account called `name`, without its base group.
  void setGroups(const std::string& name, std::vector<std::int32_t> groups) {
    groups_[name] = std::move(groups);
  }
  /// Refuses every switch to this user from now on.
  void refuseUser(std::uint64_t uid) { refusedUsers_.insert(uid); }
  /// Refuses every switch to this group, and every list of groups, from now on.
  void refuseGroup(std::uint64_t gid) { refusedGroups_.insert(gid); }
  void refuseGroupLists() { refusesGroupLists_ = true; }
  /// Calls `action` with each switch asked for, as calls() names it, before it is made.
  void whenSwitching(std::function<void(const std::string& call)> action) {
    whenSwitching_ = std::move(action);
  }

  std::uint32_t geteuid() const override { return euid_; }
  std::uint32_t getegid() const override { return egid_; }
  int seteuid(std::uint64_t uid) override;
  int setegid(std::uint64_t gid) override;
  bool actsAsWanted() const override { return actsAsWanted_; }
  int getgrouplist(const std::string& name, std::int32_t baseGroup, std::int32_t* groups,
                   int* count) const override;
  std::vector<std::uint32_t> groupsOf(const std::string& name,
                                      std::uint32_t baseGroup) const override;
  std::vector<std::uint32_t> getgroups() const override { return heldGroups_; }
  int setgroups(const std::vector<std::uint32_t>& groups) override;

  /// The switches asked for, in order, refused ones included: "seteuid 501", "setgroups 20,80".
  const std::vector<std::string>& calls() const { return calls_; }

 private:
  void record(std::string call);
  bool allowsUser(std::uint64_t uid) const;
  bool allowsGroup(std::uint64_t gid) const;
  std::vector<std::int32_t> listedGroups(const std::string& name, std::int32_t baseGroup) const;

  Rules rules_;
  std::map<std::string, std::vector<std::int32_t>> groups_;
  std::set<std::uint64_t> refusedUsers_;
  std::set<std::uint64_t> refusedGroups_;
  bool refusesGroupLists_ = false;
  std::function<void(const std::string& call)> whenSwitching_;
  std::uint32_t euid_ = 0;
  std::uint32_t egid_ = 0;
  std::vector<std::uint32_t> heldGroups_;
  bool actsAsWanted_ = true;
  std::vector<std::string> calls_;
};

}  // namespace vt
