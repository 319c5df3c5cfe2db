#pragma once

#include <cstdint>
#include <vector>

namespace vt {

/// On whose behalf something is judged: an account's id and all groups that it is in. Immutable.
class Credentials {
 public:
  /// `groups` in any order; `gid` counts whether or not it is among them.
  Credentials(std::uint32_t uid, std::uint32_t gid, std::vector<std::uint32_t> groups);

  std::uint32_t uid() const { return uid_; }
  std::uint32_t gid() const { return gid_; }
  /// Sorted, each once, the primary group among them.
  const std::vector<std::uint32_t>& groups() const { return groups_; }

  /// The superuser may read everything.
  bool isSuperuser() const { return uid_ == 0; }
  bool isMemberOf(std::uint32_t group) const;

 private:
  std::uint32_t uid_;
  std::uint32_t gid_;
  std::vector<std::uint32_t> groups_;
};

}  // namespace vt
