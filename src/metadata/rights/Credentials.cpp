#include "metadata/rights/Credentials.h"

#include <algorithm>
#include <utility>

namespace vt {

Credentials::Credentials(std::uint32_t uid, std::uint32_t gid, std::vector<std::uint32_t> groups)
    : uid_(uid), gid_(gid), groups_(std::move(groups)) {
  groups_.push_back(gid_);
  std::ranges::sort(groups_);
  const auto repeated = std::ranges::unique(groups_);
  groups_.erase(repeated.begin(), repeated.end());
}

bool Credentials::isMemberOf(std::uint32_t group) const {
  // Most accounts are in a few groups, and comparing with each takes no branch to be guessed.
  constexpr std::size_t kMostCompared = 16;
  if (groups_.size() > kMostCompared) return std::ranges::binary_search(groups_, group);
  bool isMember = false;
  for (const std::uint32_t mine : groups_) isMember |= mine == group;
  return isMember;
}

}  // namespace vt
