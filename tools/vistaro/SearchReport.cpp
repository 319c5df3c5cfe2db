#include "vistaro/SearchReport.h"

#include <algorithm>

namespace vt::tool {

std::size_t SearchReport::count() const {
  std::size_t count = 0;
  for (const auto& group : *groups) count += group->count();
  return count;
}

std::pair<std::size_t, std::size_t> SearchReport::shown(const VTSearchResult& group) const {
  const std::size_t count = group.count();
  if (perPage == 0) return {0, count};
  // Page first: a page number far past the end must not wrap round.
  if (page - 1 > count / perPage) return {count, count};
  const std::size_t first = std::min((page - 1) * perPage, count);
  return {first, first + std::min(perPage, count - first)};
}

}  // namespace vt::tool
