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
  return std::ranges::binary_search(groups_, group);
}

}  // namespace vt
