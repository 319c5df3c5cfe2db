#include "vistaro/FolderTree.h"

#include <fmt/format.h>

#include <vector>

#include "vistaro/CommandError.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

std::optional<FolderPlace> findFolder(const std::shared_ptr<Folders>& top,
                                      const std::string& title) {
  std::vector<FolderPlace> unvisited;
  const auto pushMembers = [&](const Folders& members,
                               const std::shared_ptr<VTSearchFolderGroup>& group) {
    for (std::size_t i = members.size(); i > 0; --i) {
      unvisited.push_back({members.at(i - 1), group});
    }
  };
  pushMembers(*top, nullptr);
  while (!unvisited.empty()) {
    FolderPlace place = std::move(unvisited.back());
    unvisited.pop_back();
    if (place.folder->title() == title) return place;
    const std::shared_ptr<Folders> members = place.folder->folders();
    if (members) {
      pushMembers(*members, std::static_pointer_cast<VTSearchFolderGroup>(place.folder));
    }
  }
  return std::nullopt;
}

FolderPlace placeOfFolder(const std::shared_ptr<Folders>& top, const std::string& title) {
  if (std::optional<FolderPlace> place = findFolder(top, title)) return *std::move(place);
  throw CommandError{kNothingFound,
                     fmt::format("no search folder is called \"{}\"; `vistaro folders list` "
                                 "names them",
                                 printable(title))};
}

std::shared_ptr<VTSearchFolderGroup> groupCalled(const std::shared_ptr<Folders>& top,
                                                 const std::string& title) {
  auto group = std::dynamic_pointer_cast<VTSearchFolderGroup>(placeOfFolder(top, title).folder);
  if (group) return group;
  throw CommandError{kUsage, fmt::format("\"{}\" is a folder and no group", printable(title))};
}

void takeOut(const std::shared_ptr<Folders>& top, const FolderPlace& place) {
  if (place.group) {
    place.group->removeFolder(place.folder);
  } else {
    std::erase(top->elements(), place.folder);
  }
}

}  // namespace vt::tool
