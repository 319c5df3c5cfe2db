#include "metadata/indexing/SegmentMemory.h"

#include <chrono>
#include <vector>

#include "metadata/store/FoldersAlong.h"

namespace vt {
namespace {

static_assert(kNoFolder == kNoCrawledFolder);

// File systems stamp changes by a clock that may be behind the one that a crawl is dated by: by a
// tick of the kernel, or by the whole second or two in which some file systems count.
constexpr std::chrono::seconds kCoarsestTick{2};

}  // namespace

CrawledFolderId SegmentMemory::folderAt(std::string_view path) const {
  const std::vector<std::uint32_t> folders = foldersAlong(earlier_.segment->columns(), path);
  return folders.empty() ? kNoCrawledFolder : folders.back();
}

std::optional<FolderStamp> SegmentMemory::stampOf(CrawledFolderId folder) const {
  if (earlier_.segment->columns().areListed[folder] == 0) return std::nullopt;
  return earlier_.segment->stampOf(folder);
}

void SegmentMemory::entriesOf(CrawledFolderId folder,
                              FunctionRef<void(const RememberedEntry&)> visit) const {
  const SegmentColumns& segment = earlier_.segment->columns();
  for (const std::uint32_t row : rowsByFolder_[folder]) {
    const std::uint32_t accessClass = segment.classOf(row);
    visit({.name = segment.name(row),
           .attributesChanged = segment.attributesChangedOf(row),
           .ownership = segment.classes[accessClass].ownership,
           .acl = earlier_.segment->aclPresenceOf(accessClass),
           .aclBytes = earlier_.segment->aclBytesOf(accessClass),
           .folder = segment.ownFolderOf(row)});
  }
}

Date SegmentMemory::seenUntil() const { return earlier_.manifest.began - kCoarsestTick; }

}  // namespace vt
