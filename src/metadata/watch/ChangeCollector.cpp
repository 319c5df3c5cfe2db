#include "metadata/watch/ChangeCollector.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vt {

void ChangeCollector::touch(WatchInstant now) {
  if (!first_) first_ = now;
  last_ = now;
}

void ChangeCollector::addEntry(WatchedFolder folder, std::string_view name, WatchInstant now) {
  touch(now);
  if (!written_.empty()) written_.erase({folder, std::string(name)});
  insertEntry(folder, std::string(name));
}

void ChangeCollector::insertEntry(WatchedFolder folder, std::string name) {
  if (isEverything_) return;
  Names& names = folders_[folder];
  // The listing of a folder tells of its entries, but not of the folder.
  if (names.isToBeListed && !name.empty()) return;
  if (names.entries.insert(std::move(name)).second) ++names_;
  bound(names);
}

void ChangeCollector::addWritten(WatchedFolder folder, std::string_view name, WatchInstant now) {
  if (isEverything_) return;
  if (const auto known = folders_.find(folder); known != folders_.end()) {
    const Names& names = known->second;
    if (names.isToBeListed || names.entries.contains(std::string(name))) return;
  }
  if (written_.empty()) writtenSince_.clear();
  const auto [file, isNew] = written_.insert({folder, std::string(name)});
  if (isNew) writtenSince_.emplace_back(now, *file);
  if (size() > limits_.allNames) addEverything(now);
}

void ChangeCollector::addTree(WatchedFolder folder, std::string_view name, WatchInstant now) {
  touch(now);
  if (isEverything_) return;
  Names& names = folders_[folder];
  if (names.trees.insert(std::string(name)).second) ++names_;
  bound(names);
}

void ChangeCollector::addTreeAt(std::string path, WatchInstant now) {
  touch(now);
  if (!isEverything_) trees_.push_back(std::move(path));
}

void ChangeCollector::bound(Names& names) {
  if (names.entries.size() > limits_.names) {
    const bool isItselfChanged = names.entries.contains("");
    names_ -= names.entries.size();
    names.entries.clear();
    names.isToBeListed = true;
    if (isItselfChanged) names.entries.insert("");
    names_ += names.entries.size();
  }
  if (names.trees.size() > limits_.names) {
    names_ -= names.trees.size() - 1;
    names.trees = {""};
  }
  if (size() > limits_.allNames) addEverything(last_);
}

void ChangeCollector::addEverything(WatchInstant now) {
  touch(now);
  isEverything_ = true;
  names_ = 0;
  folders_.clear();
  trees_.clear();
  written_.clear();
  writtenSince_.clear();
}

bool ChangeCollector::isTree(WatchedFolder folder, std::string_view name) const {
  if (isEverything_) return true;
  const auto known = folders_.find(folder);
  if (known == folders_.end()) return false;
  const Names& names = known->second;
  return names.isToBeListed || names.trees.contains("") || names.trees.contains(std::string(name));
}

std::optional<WatchInstant> ChangeCollector::due() const {
  std::optional<WatchInstant> due;
  if (first_) due = std::min(*first_ + limits_.longest, last_ + limits_.quiet);
  if (!written_.empty()) {
    // The oldest may have been closed since: then this is too early, and nothing is there to take.
    const WatchInstant writing = writtenSince_.front().first + limits_.writing;
    due = due ? std::min(*due, writing) : writing;
  }
  return due;
}

void ChangeCollector::takeWritten(WatchInstant now) {
  while (!writtenSince_.empty() && now - writtenSince_.front().first >= limits_.writing) {
    File& file = writtenSince_.front().second;
    if (written_.erase(file) > 0) insertEntry(file.folder, std::move(file.name));
    writtenSince_.pop_front();
  }
  if (written_.empty()) writtenSince_.clear();
}

CollectedChanges ChangeCollector::take(WatchInstant now) {
  takeWritten(now);
  CollectedChanges taken;
  taken.isEverything = std::exchange(isEverything_, false);
  taken.folders.reserve(folders_.size());
  for (auto& [folder, names] : folders_) {
    CollectedFolder& collected = taken.folders.emplace_back();
    collected.folder = folder;
    collected.isToBeListed = names.isToBeListed;
    std::ranges::copy(names.entries, std::back_inserter(collected.entries));
    std::ranges::copy(names.trees, std::back_inserter(collected.trees));
  }
  taken.trees = std::exchange(trees_, {});
  folders_.clear();
  names_ = 0;
  first_.reset();
  return taken;
}

}  // namespace vt
