#include "metadata/crawl/PendingFolders.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vt {

void PendingFolders::addRoot(const PendingFolder& root) {
  pending_.push_back(root);
  pending_.back().path.clear();
  pending_.back().place = addName(kNoPlace, root.path);
}

void PendingFolders::addFolders(const PendingFolder& parent,
                                std::span<const CrawledEntry> entries) {
  for (const CrawledEntry& entry : entries) {
    if (entry.folder == kNoCrawledFolder) continue;
    pending_.push_back({entry.folder,
                        entry.before,
                        entry.status.device,
                        entry.status.inode,
                        entry.status.device != parent.device,
                        addName(parent.place, entry.name),
                        {}});
  }
}

PendingFolder PendingFolders::take() {
  assert(!isEmpty());
  PendingFolder folder = std::move(pending_.back());
  pending_.pop_back();
  folder.path = pathOf(folder.place);
  return folder;
}

std::size_t PendingFolders::addName(std::size_t parent, std::string_view name) {
  names_ += name;
  tree_.push_back({parent, names_.size()});
  return tree_.size() - 1;
}

std::string_view PendingFolders::nameAt(std::size_t place) const {
  const std::size_t begin = place == 0 ? 0 : tree_[place - 1].end;
  return std::string_view(names_).substr(begin, tree_[place].end - begin);
}

std::string PendingFolders::pathOf(std::size_t place) const {
  // From the last name to the root, each turned round, and then the whole: as many steps as bytes.
  std::string path;
  for (std::size_t at = place; at != kNoPlace; at = tree_[at].parent) {
    const std::string_view name = nameAt(at);
    path.append(name.rbegin(), name.rend());
    if (tree_[at].parent != kNoPlace && nameAt(tree_[at].parent) != "/") path += '/';
  }
  std::ranges::reverse(path);
  return path;
}

}  // namespace vt
