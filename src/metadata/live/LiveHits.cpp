#include "metadata/live/LiveHits.h"

#include <algorithm>
#include <utility>

#include "metadata/live/LiveFile.h"

namespace vt {

std::string LiveHits::pathOf(const LiveHit& hit) const {
  return joinPath(folderPaths_[hit.folder], hit.name);
}

void LiveHits::add(std::string_view folderPath, std::string_view name, ContentTypeId type,
                   const FileStatus& status) {
  // Hits of one folder mostly come in a row, so its path is kept once for all of them.
  if (folderPaths_.empty() || folderPaths_.back() != folderPath) {
    folderPaths_.emplace_back(folderPath);
  }
  hits_.push_back(
      {static_cast<std::uint32_t>(folderPaths_.size() - 1), type, std::string(name), status});
}

bool LiveHits::precedesInPath(const LiveHit& a, const LiveHit& b) const {
  if (a.folder == b.folder) return a.name < b.name;
  return pathOf(a) < pathOf(b);
}

void LiveHits::sortNewestFirst() {
  std::ranges::sort(hits_, [this](const LiveHit& a, const LiveHit& b) {
    if (a.status.modified != b.status.modified) return a.status.modified > b.status.modified;
    return precedesInPath(a, b);
  });
}

void LiveHits::reorder(const std::vector<std::size_t>& order) {
  std::vector<LiveHit> sorted;
  sorted.reserve(hits_.size());
  for (const std::size_t index : order) sorted.push_back(std::move(hits_[index]));
  hits_ = std::move(sorted);
}

}  // namespace vt
