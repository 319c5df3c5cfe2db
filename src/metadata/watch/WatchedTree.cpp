#include "metadata/watch/WatchedTree.h"

#include <algorithm>
#include <utility>

namespace vt {

WatchedTree::Place WatchedTree::ByPlace::placeOf(WatchedFolder folder) const {
  const Node& node = nodes->at(folder);
  return {node.parent, node.name};
}

WatchedFolder WatchedTree::add(WatchedFolder parent, std::string name) {
  const WatchedFolder folder = next_++;
  Node& node = nodes_[folder];
  node.parent = parent;
  node.name = std::move(name);
  places_.insert(folder);
  return folder;
}

WatchedFolder WatchedTree::child(WatchedFolder parent, std::string_view name) const {
  const auto found = places_.find(Place{parent, name});
  return found == places_.end() ? kNone : *found;
}

std::vector<WatchedFolder> WatchedTree::children(WatchedFolder parent) const {
  std::vector<WatchedFolder> found;
  for (auto at = places_.lower_bound(Place{parent, ""});
       at != places_.end() && nodes_.at(*at).parent == parent; ++at) {
    found.push_back(*at);
  }
  return found;
}

std::optional<std::string> WatchedTree::pathOf(WatchedFolder folder) const {
  std::vector<const std::string*> names;
  std::size_t bytes = 0;
  for (WatchedFolder at = folder; at != kNone;) {
    const auto node = nodes_.find(at);
    if (node == nodes_.end() || node->second.isDetached) return std::nullopt;
    names.push_back(&node->second.name);
    bytes += node->second.name.size() + 1;
    at = node->second.parent;
  }
  std::string path;
  path.reserve(bytes);
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    if (!path.empty() && path.back() != '/') path += '/';
    path += **name;
  }
  return path;
}

void WatchedTree::detach(WatchedFolder folder) {
  places_.erase(folder);
  nodes_.at(folder).isDetached = true;
}

void WatchedTree::attach(WatchedFolder folder, WatchedFolder parent, std::string_view name) {
  Node& node = nodes_.at(folder);
  if (!node.isDetached) places_.erase(folder);
  node.parent = parent;
  node.name = name;
  node.isDetached = false;
  places_.insert(folder);
}

void WatchedTree::setWatch(WatchedFolder folder, int watch) {
  int& number = nodes_.at(folder).watch;
  if (number != kNotWatched) {
    const auto [begin, end] = watches_.equal_range(number);
    const auto entry =
        std::find_if(begin, end, [&](const auto& known) { return known.second == folder; });
    if (entry != end) watches_.erase(entry);
  }
  number = watch;
  if (watch != kNotWatched) watches_.emplace(watch, folder);
}

std::vector<WatchedFolder> WatchedTree::foldersOf(int watch) const {
  std::vector<WatchedFolder> folders;
  const auto [begin, end] = watches_.equal_range(watch);
  for (auto entry = begin; entry != end; ++entry) folders.push_back(entry->second);
  return folders;
}

void WatchedTree::forgetWatch(int watch) {
  for (const WatchedFolder folder : foldersOf(watch)) setWatch(folder, kNotWatched);
}

std::vector<int> WatchedTree::remove(WatchedFolder folder) {
  std::vector<int> unused;
  std::vector<WatchedFolder> doomed{folder};
  for (std::size_t i = 0; i < doomed.size(); ++i) {
    const std::vector<WatchedFolder> below = children(doomed[i]);
    doomed.insert(doomed.end(), below.begin(), below.end());
  }
  for (const WatchedFolder each : doomed) {
    const int watch = nodes_.at(each).watch;
    setWatch(each, kNotWatched);
    if (watch != kNotWatched && !watches_.contains(watch)) unused.push_back(watch);
    if (!nodes_.at(each).isDetached) places_.erase(each);
    nodes_.erase(each);
  }
  return unused;
}

}  // namespace vt
