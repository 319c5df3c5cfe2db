#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace vt {

/// Answers Identity::getgrouplist() from a list that is known whole: as many of `all` as
/// `*count` has room for go into `groups`, and `*count` becomes how many there are. -1 when they
/// did not all fit, else that number.
inline int fillGroupList(const std::vector<std::int32_t>& all, std::int32_t* groups, int* count) {
  const int room = std::max(*count, 0);
  const int needed = static_cast<int>(all.size());
  if (groups) std::copy_n(all.begin(), std::min(room, needed), groups);
  *count = needed;
  return needed > room ? -1 : needed;
}

}  // namespace vt
