#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "metadata/crawl/CrawlMemory.h"
#include "metadata/store/GenerationColumns.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/RowsByFolder.h"

namespace vt {

/// What the crawl of an earlier generation of an index found.
class SegmentMemory final : public CrawlMemory {
 public:
  /// The generation must be sound (see verifySegment): what is damaged would be believed.
  explicit SegmentMemory(IndexGeneration earlier)
      : earlier_(std::move(earlier)),
        columns_(columnsOf(earlier_)),
        rowsOfBase_(columns_.base),
        rowsOfDelta_(columns_.delta) {}

  CrawledFolderId folderAt(std::string_view path) const override;
  std::optional<FolderStamp> stampOf(CrawledFolderId folder) const override;
  void entriesOf(CrawledFolderId folder,
                 FunctionRef<void(const RememberedEntry&)> visit) const override;
  Date seenUntil() const override;

  /// Keeps the memory of the process small while much is asked.
  void dropPages() const { earlier_.segment->dropPages(); }

  /// The segments that it consists of.
  std::vector<SegmentIdentity> segments() const;
  std::size_t entryCount() const { return columns_.entryCount(); }

 private:
  /// The segment whose tables of folders and classes count.
  const Segment& tables() const { return earlier_.delta ? *earlier_.delta : *earlier_.segment; }
  RememberedEntry entryAt(const SegmentColumns& segment, std::uint32_t row) const;

  IndexGeneration earlier_;
  GenerationColumns columns_;
  RowsByFolder rowsOfBase_;
  RowsByFolder rowsOfDelta_;
};

}  // namespace vt
