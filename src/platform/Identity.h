#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vt {

/// The identity under which this process acts, and the system's group lists.
///
/// Ids are wide enough for every unsigned 32-bit id and for -1.
class Identity {
 public:
  virtual ~Identity() = default;

  virtual std::uint32_t geteuid() const = 0;
  virtual std::uint32_t getegid() const = 0;

  /// 0, or -1 when the system refuses; a refused call changes nothing. A refused switch to a
  /// non-zero user is remembered: see actsAsWanted().
  virtual int seteuid(std::uint64_t uid) = 0;
  virtual int setegid(std::uint64_t gid) = 0;

  /// False from a refused seteuid() to a non-zero user until the next one that succeeds: whoever
  /// answers on behalf of the effective user must then answer nothing.
  virtual bool actsAsWanted() const = 0;

  /// The groups of the account called `name`, `baseGroup` first, into `groups`, which has room for
  /// `*count`. Stores in `*count` how many there are, which may be more than there was room for,
  /// and returns -1 then; an unknown name has just the base group.
  virtual int getgrouplist(const std::string& name, std::int32_t baseGroup, std::int32_t* groups,
                           int* count) const = 0;

  /// All groups of the account called `name`, `baseGroup` first, as wide as they are; an unknown
  /// name has just the base group. May ask the directory.
  virtual std::vector<std::uint32_t> groupsOf(const std::string& /*name*/,
                                              std::uint32_t baseGroup) const {
    return {baseGroup};
  }

  /// The further groups under which the calling thread acts.
  virtual std::vector<std::uint32_t> getgroups() const { return {}; }

  /// 0, or -1 when the system refuses, as an identity that has no groups always does.
  virtual int setgroups(const std::vector<std::uint32_t>& /*groups*/) { return -1; }
};

}  // namespace vt
