#include "metadata/watch/FolderHandles.h"

namespace vt {

WatchedFolder FolderHandles::numberOf(std::string_view handle) {
  const auto number = static_cast<WatchedFolder>(handles_.size());
  const auto [known, isNew] = numbers_.try_emplace(std::string(handle), number);
  if (isNew) handles_.push_back({.bytes = &known->first});
  return known->second;
}

void FolderHandles::clear() {
  handles_.clear();
  numbers_.clear();
}

}  // namespace vt
