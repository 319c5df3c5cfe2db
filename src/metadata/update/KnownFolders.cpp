#include "metadata/update/KnownFolders.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace vt {

std::size_t KnownFolders::keyOf(std::uint32_t parent, std::string_view name) {
  return std::hash<std::string_view>{}(name) ^ (std::size_t{parent} * 0x9E3779B97F4A7C15U);
}

std::size_t KnownFolders::keyOf(const FolderStamp& stamp) {
  return stamp.inode ^ (stamp.device * 0x9E3779B97F4A7C15U);
}

void KnownFolders::erase(std::unordered_multimap<std::size_t, std::uint32_t>& from, std::size_t key,
                         std::uint32_t folder) {
  const auto [first, last] = from.equal_range(key);
  for (auto at = first; at != last; ++at) {
    if (at->second != folder) continue;
    from.erase(at);
    return;
  }
}

std::uint32_t KnownFolders::add(KnownFolder folder) {
  const auto number = static_cast<std::uint32_t>(folders_.size());
  if (folder.parent != kNoFolder) {
    children_[folder.parent].push_back(number);
    byName_.emplace(keyOf(folder.parent, folder.name), number);
  }
  byIdentity_.emplace(keyOf(folder.stamp), number);
  folders_.push_back(std::move(folder));
  children_.emplace_back();
  return number;
}

std::uint32_t KnownFolders::find(std::uint32_t parent, std::string_view name) const {
  const auto [first, last] = byName_.equal_range(keyOf(parent, name));
  for (auto at = first; at != last; ++at) {
    const KnownFolder& folder = folders_[at->second];
    if (folder.parent == parent && folder.name == name) return at->second;
  }
  return kNoFolder;
}

std::uint32_t KnownFolders::at(std::string_view path) const {
  std::uint32_t folder = folders_.empty() ? kNoFolder : 0;
  while (folder != kNoFolder && path.size() > 1) {
    path.remove_prefix(1);
    const std::string_view name = path.substr(0, path.find('/'));
    folder = find(folder, name);
    path.remove_prefix(name.size());
  }
  return folder;
}

std::vector<std::uint32_t> KnownFolders::sameAs(std::uint64_t device, std::uint64_t inode) const {
  FolderStamp wanted;
  wanted.device = device;
  wanted.inode = inode;
  std::vector<std::uint32_t> same;
  const auto [first, last] = byIdentity_.equal_range(keyOf(wanted));
  for (auto at = first; at != last; ++at) {
    const FolderStamp& stamp = folders_[at->second].stamp;
    if (stamp.device == device && stamp.inode == inode) same.push_back(at->second);
  }
  return same;
}

std::optional<std::string> KnownFolders::pathOf(std::uint32_t folder) const {
  if (folder == 0) return "/";
  std::vector<std::uint32_t> steps;
  for (std::uint32_t at = folder; at != 0; at = folders_[at].parent) {
    if (at == kNoFolder) return std::nullopt;
    steps.push_back(at);
  }
  std::string path;
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    path.append("/").append(folders_[*step].name);
  }
  return path;
}

std::uint32_t KnownFolders::depthOf(std::uint32_t folder) const {
  std::uint32_t depth = 0;
  for (std::uint32_t at = folders_[folder].parent; at != kNoFolder; at = folders_[at].parent) {
    ++depth;
  }
  return depth;
}

bool KnownFolders::isIn(std::uint32_t folder, std::uint32_t ancestor) const {
  for (std::uint32_t at = folder; at != kNoFolder; at = folders_[at].parent) {
    if (at == ancestor) return true;
  }
  return false;
}

bool KnownFolders::isCovered(std::uint32_t folder) const {
  for (std::uint32_t at = folder; at != kNoFolder; at = folders_[at].parent) {
    if (folders_[at].isRoot) return true;
  }
  return false;
}

void KnownFolders::detach(std::uint32_t folder) {
  KnownFolder& detached = folders_[folder];
  if (detached.parent == kNoFolder) return;
  std::vector<std::uint32_t>& siblings = children_[detached.parent];
  const auto place = std::ranges::find(siblings, folder);
  *place = siblings.back();
  siblings.pop_back();
  erase(byName_, keyOf(detached.parent, detached.name), folder);
  detached.parent = kNoFolder;
}

void KnownFolders::attach(std::uint32_t folder, std::uint32_t parent, std::string_view name) {
  KnownFolder& attached = folders_[folder];
  attached.parent = parent;
  attached.name = name;
  children_[parent].push_back(folder);
  byName_.emplace(keyOf(parent, name), folder);
}

void KnownFolders::setStamp(std::uint32_t folder, const FolderStamp& stamp) {
  erase(byIdentity_, keyOf(folders_[folder].stamp), folder);
  folders_[folder].stamp = stamp;
  byIdentity_.emplace(keyOf(stamp), folder);
}

void KnownFolders::remove(std::uint32_t folder, FunctionRef<void(std::uint32_t folder)> visit) {
  std::vector<std::uint32_t> pending = {folder};
  while (!pending.empty()) {
    const std::uint32_t at = pending.back();
    pending.pop_back();
    pending.insert(pending.end(), children_[at].begin(), children_[at].end());
    visit(at);
    if (folders_[at].parent != kNoFolder) {
      erase(byName_, keyOf(folders_[at].parent, folders_[at].name), at);
    }
    erase(byIdentity_, keyOf(folders_[at].stamp), at);
    children_[at].clear();
    folders_[at].isGone = true;
    folders_[at].parent = kNoFolder;
  }
}

}  // namespace vt
