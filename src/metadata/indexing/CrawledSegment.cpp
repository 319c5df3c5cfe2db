#include "metadata/indexing/CrawledSegment.h"

#include <optional>
#include <string_view>
#include <vector>

#include "metadata/crawl/FolderOpener.h"
#include "metadata/rights/AclReader.h"

namespace vt {

CrawledSegment::CrawledSegment(const ContentTypes& types, RowContents* contents)
    : built_(types), contents_(contents) {}

CrawledFolderId CrawledSegment::addRoot(const std::string& path) {
  folderAt("/");
  for (std::size_t slash = path.find('/', 1); slash < path.size();
       slash = path.find('/', slash + 1)) {
    folderAt(path.substr(0, slash));
  }
  const std::uint32_t folder = folderAt(path);
  built_.markRoot(folder);
  return folder;
}

std::uint32_t CrawledSegment::folderAt(const std::string& path) {
  if (const auto known = rootsAndAbove_.find(path); known != rootsAndAbove_.end()) {
    return known->second;
  }
  const Descriptor folder = FolderOpener().find(path);
  const std::optional<FileStatus> status = folder.isOpen() ? statusOf(folder.get()) : std::nullopt;
  std::vector<std::uint8_t> list;
  const AclPresence acl = status ? readAclBytes(folder.get(), ".", list) : AclPresence::kUnknown;
  const std::uint32_t accessClass =
      built_.addClass(status ? status->ownership : FileOwnership{}, acl, list);
  const std::size_t slash = path.rfind('/');
  const std::string above = slash == 0 ? "/" : path.substr(0, slash);
  const bool isTop = path == "/";
  const std::uint32_t added = built_.addFolder(isTop ? kNoFolder : rootsAndAbove_.at(above),
                                               path.substr(slash + 1), accessClass);
  rootsAndAbove_.emplace(path, added);
  return added;
}

bool CrawledSegment::addEntries(CrawledFolderId folder, std::span<CrawledEntry> entries) {
  for (const CrawledEntry& entry : entries) built_.prefetchClass(entry.status.ownership);
  for (CrawledEntry& entry : entries) {
    SegmentEntry row{
        .name = entry.name,
        .status = entry.status,
        .type = entry.type,
        .accessClass = built_.addClass(entry.status.ownership, entry.acl, entry.aclBytes),
        .folder = folder};
    if (entry.status.isFolder()) {
      row.ownFolder = entry.folder = built_.addFolder(folder, entry.name, row.accessClass);
    }
    if (built_.addRow(row)) {
      if (contents_ != nullptr) contents_->add(entry);
    } else if (built_.isFull()) {
      return false;
    }
  }
  return true;
}

void CrawledSegment::finishFolder(CrawledFolderId folder, const FolderStamp& stamp,
                                  bool isComplete) {
  built_.finishFolder(folder, stamp, isComplete);
}

}  // namespace vt
