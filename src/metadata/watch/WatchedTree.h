#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "metadata/watch/ChangeCollector.h"

namespace vt {

/// The folders that are watched one by one: a tree of names, and the kernel's number for each.
class WatchedTree {
 public:
  static constexpr WatchedFolder kNone = 0xFFFFFFFF;
  static constexpr int kNotWatched = -1;

  WatchedTree() = default;
  WatchedTree(const WatchedTree&) = delete;
  WatchedTree& operator=(const WatchedTree&) = delete;

  /// Adds a folder to begin at, by its absolute path.
  WatchedFolder addRoot(std::string path) { return add(kNone, std::move(path)); }
  /// Adds a folder called `name` to `parent`, which must have none of that name.
  WatchedFolder addChild(WatchedFolder parent, std::string_view name) {
    return add(parent, std::string(name));
  }
  /// The folder called so in `parent`, or kNone.
  WatchedFolder child(WatchedFolder parent, std::string_view name) const;
  /// The folders in `parent`, by name.
  std::vector<WatchedFolder> children(WatchedFolder parent) const;

  bool holds(WatchedFolder folder) const { return nodes_.contains(folder); }
  /// kNone for a root, and for one that is nowhere.
  WatchedFolder parentOf(WatchedFolder folder) const { return nodes_.at(folder).parent; }
  /// Where the folder is; nothing when it is not, or nobody knows.
  std::optional<std::string> pathOf(WatchedFolder folder) const;

  /// Takes a folder with all below it out of its place, without one as yet.
  void detach(WatchedFolder folder);
  /// Gives it a place, which must be free.
  void attach(WatchedFolder folder, WatchedFolder parent, std::string_view name);

  /// Sets the kernel's number of a folder, or kNotWatched. Several may have the same.
  void setWatch(WatchedFolder folder, int watch);
  int watchOf(WatchedFolder folder) const { return nodes_.at(folder).watch; }
  /// The folders that have this number.
  std::vector<WatchedFolder> foldersOf(int watch) const;
  /// Takes the number from all that have it.
  void forgetWatch(int watch);

  /// Removes a folder with all below it; gives the numbers that no folder has any more.
  std::vector<int> remove(WatchedFolder folder);

  std::size_t size() const { return nodes_.size(); }

 private:
  struct Node {
    WatchedFolder parent = kNone;
    int watch = kNotWatched;
    bool isDetached = false;
    std::string name;  // of a root its path
  };
  struct Place {
    WatchedFolder parent;
    std::string_view name;
  };
  struct ByPlace {
    using is_transparent = void;
    const std::unordered_map<WatchedFolder, Node>* nodes;
    Place placeOf(WatchedFolder folder) const;
    template <class A, class B>
    bool operator()(const A& a, const B& b) const {
      return isBefore(placeOf(a), placeOf(b));
    }
    static const Place& placeOf(const Place& place) { return place; }
    static bool isBefore(const Place& a, const Place& b) {
      return a.parent != b.parent ? a.parent < b.parent : a.name < b.name;
    }
  };

  WatchedFolder add(WatchedFolder parent, std::string name);

  // Numbers are never given again, so that what still speaks of a folder that is gone finds none.
  WatchedFolder next_ = 0;
  std::unordered_map<WatchedFolder, Node> nodes_;
  std::set<WatchedFolder, ByPlace> places_{ByPlace{&nodes_}};
  std::unordered_multimap<int, WatchedFolder> watches_;
};

}  // namespace vt
