#include "scopes/VTSearchFolderGroup.h"

#include <algorithm>
#include <utility>

#include "scopes/ShortestAddress.h"

namespace vt {

std::shared_ptr<VTSearchFolderGroup> VTSearchFolderGroup::initWithTitle(
    std::optional<std::string> title) {
  std::shared_ptr<VTSearchFolderGroup> group(new VTSearchFolderGroup);
  group->setTitle(std::move(title));
  return group;
}

std::shared_ptr<VTSearchFolderGroup> VTSearchFolderGroup::initWithDictionary(
    const Dictionary& data) {
  std::shared_ptr<VTSearchFolderGroup> group(new VTSearchFolderGroup);
  group->setValue(data.get("title"), "title");
  const Value* children = data.find("children");
  const std::shared_ptr<Array> members = children ? children->array() : nullptr;
  if (!members) return group;
  for (const Value& member : *members) {
    const std::shared_ptr<Dictionary> memberData = member.dictionary();
    if (!memberData)
      throw InvalidArgumentError("a member of a search folder group is no dictionary");
    group->addFolder(deserializeFolderWithData(*memberData));
  }
  return group;
}

std::int64_t VTSearchFolderGroup::download() const {
  if (!folders_) return 0;
  std::optional<std::int64_t> common;
  for (const std::shared_ptr<VTSearchFolder>& folder : *folders_) {
    const std::int64_t download = folder->download();
    if (!common) {
      common = download;
    } else if ((*common == 0 && download == 1) || (*common == 1 && download == 0)) {
      return -1;
    }
  }
  return common.value_or(0);
}

void VTSearchFolderGroup::setDownload(std::int64_t download) {
  const ValueChange change(*this, "download");
  if (!folders_) return;
  for (const std::shared_ptr<VTSearchFolder>& folder : *folders_) folder->setDownload(download);
}

void VTSearchFolderGroup::addFolder(const std::shared_ptr<VTSearchFolder>& folder) {
  if (!folder) throw InvalidArgumentError("a search folder group takes no nil member");
  if (!folders_) folders_ = ObjectArray<VTSearchFolder>::make();
  const bool present = std::ranges::any_of(
      *folders_, [&](const auto& member) { return member->isEqual(folder.get()); });
  if (present) return;
  const ValueChange change(*this, "folders");
  folders_->append(folder);
}

void VTSearchFolderGroup::removeFolder(std::shared_ptr<VTSearchFolder> folder) {
  const ValueChange change(*this, "folders");
  if (!folders_) return;
  std::erase_if(folders_->elements(),
                [&](const auto& member) { return member->isEqual(folder.get()); });
}

bool VTSearchFolderGroup::isDownloadable(const std::string& path) const {
  return folders_ && std::ranges::any_of(*folders_, [&](const auto& folder) {
           return folder->isDownloadable(path);
         });
}

std::optional<std::string> VTSearchFolderGroup::afpURLforPath(const std::string& path) const {
  return shortestAddress(folders_,
                         [&](const VTSearchFolder& folder) { return folder.afpURLforPath(path); });
}

std::optional<std::string> VTSearchFolderGroup::smbURLforPath(const std::string& path,
                                                              bool windowsClient) const {
  return shortestAddress(folders_, [&](const VTSearchFolder& folder) {
    return folder.smbURLforPath(path, windowsClient);
  });
}

std::shared_ptr<Array> VTSearchFolderGroup::paths() const {
  auto all = Array::make();
  if (!folders_) return all;
  for (const std::shared_ptr<VTSearchFolder>& folder : *folders_) {
    const std::shared_ptr<Array> paths = folder->paths();
    if (!paths) continue;
    for (const Value& path : *paths) all->append(path);
  }
  return all;
}

std::shared_ptr<Dictionary> VTSearchFolderGroup::serializedData() const {
  const std::optional<std::string> title = this->title();
  // The members go with the title: the stored form ends at the first value that is nil.
  if (!title) return Dictionary::make();
  return Dictionary::make(
      {{"title", *title},
       {"children", folders_ ? serializedDataFromFolderArray(*folders_) : Array::make()}});
}

std::shared_ptr<VTSearchFolder> VTSearchFolderGroup::searchFolderForTitle(
    const std::string& title) {
  if (auto self = VTSearchFolder::searchFolderForTitle(title)) return self;
  if (!folders_) return nullptr;
  for (const std::shared_ptr<VTSearchFolder>& folder : *folders_) {
    if (auto found = folder->searchFolderForTitle(title)) return found;
  }
  return nullptr;
}

}  // namespace vt
