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
  const std::vector<std::uint32_t> folders = foldersAlong(columns_.base, path);
  return folders.empty() ? kNoCrawledFolder : folders.back();
}

std::optional<FolderStamp> SegmentMemory::stampOf(CrawledFolderId folder) const {
  if (columns_.base.areListed[folder] == 0) return std::nullopt;
  return tables().stampOf(folder);
}

void SegmentMemory::entriesOf(CrawledFolderId folder,
                              FunctionRef<void(const RememberedEntry&)> visit) const {
  for (const std::uint32_t row : rowsOfBase_[folder]) {
    if (!columns_.dead.contains(row)) visit(entryAt(columns_.base, row));
  }
  if (columns_.delta.rowCount() == 0) return;
  for (const std::uint32_t row : rowsOfDelta_[folder]) visit(entryAt(columns_.delta, row));
}

RememberedEntry SegmentMemory::entryAt(const SegmentColumns& segment, std::uint32_t row) const {
  const std::uint32_t accessClass = segment.classOf(row);
  return {.name = segment.name(row),
          .attributesChanged = segment.attributesChangedOf(row),
          .ownership = segment.classes[accessClass].ownership,
          .acl = tables().aclPresenceOf(accessClass),
          .aclBytes = tables().aclBytesOf(accessClass),
          .folder = segment.ownFolderOf(row)};
}

std::vector<SegmentIdentity> SegmentMemory::segments() const {
  std::vector<SegmentIdentity> segments = {earlier_.segment->identity()};
  if (earlier_.delta) segments.push_back(earlier_.delta->identity());
  return segments;
}

Date SegmentMemory::seenUntil() const { return earlier_.manifest.began - kCoarsestTick; }

}  // namespace vt
