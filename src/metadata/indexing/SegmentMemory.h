#pragma once

#include <memory>
#include <utility>

#include "metadata/crawl/CrawlMemory.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/RowsByFolder.h"

namespace vt {

/// What the crawl of an earlier generation of an index found.
class SegmentMemory final : public CrawlMemory {
 public:
  /// The generation must be sound (see verifySegment): what is damaged would be believed.
  explicit SegmentMemory(IndexGeneration earlier)
      : earlier_(std::move(earlier)), rowsByFolder_(earlier_.segment->columns()) {}

  CrawledFolderId folderAt(std::string_view path) const override;
  std::optional<FolderStamp> stampOf(CrawledFolderId folder) const override;
  void entriesOf(CrawledFolderId folder,
                 FunctionRef<void(const RememberedEntry&)> visit) const override;
  Date seenUntil() const override;

  /// Keeps the memory of the process small while much is asked.
  void dropPages() const { earlier_.segment->dropPages(); }

  SegmentIdentity identity() const { return earlier_.segment->identity(); }
  std::size_t rowCount() const { return earlier_.segment->columns().rowCount(); }

 private:
  IndexGeneration earlier_;
  RowsByFolder rowsByFolder_;
};

}  // namespace vt
