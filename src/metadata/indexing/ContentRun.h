#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "metadata/catalogue/CatalogueWriter.h"
#include "metadata/extract/Extractors.h"
#include "metadata/indexing/ContentIndexer.h"
#include "metadata/indexing/RowContents.h"
#include "metadata/store/IndexFolder.h"

namespace vt {

/// What a run of the indexer does about contents, from the opening of the catalogue to the looking
/// into files. Names come first: what fails here is kept as error(), and the run goes on without.
class ContentRun {
 public:
  /// Opens the catalogue in the folder of the index, or makes it anew where it is of no use.
  /// `earlier` is the segment that the crawl remembers.
  ContentRun(const IndexFolder& folder, const Extractors& extractors,
             std::span<const SegmentIdentity> earlier);

  /// To be told of each entry of the crawl; nullptr after an error.
  RowContents* rows() { return rows_ ? &*rows_ : nullptr; }

  /// Says which contents the rows of the new segment have, as far as that is known. `earlier` are
  /// the segments that it takes the place of.
  void announce(const SegmentIdentity& segment, std::span<const std::uint32_t> rows,
                std::span<const SegmentIdentity> earlier);

  /// Looks at the extended attributes of files of the segment, which is in force now, and into
  /// them. With `hasSeenAll` the crawl has missed nothing: contents that no file has any more are
  /// forgotten.
  ContentCounts lookIntoFiles(const Segment& segment, const ContentTypes& types, bool hasSeenAll,
                              ContentIndexer::Progress progress);

  /// Why the catalogue was made anew.
  const std::optional<StoreError>& distrusted() const { return distrusted_; }
  const std::optional<StoreError>& error() const { return error_; }

 private:
  StoreFailure open(std::span<const SegmentIdentity> earlier);
  StoreFailure lookAtAttributes(const Segment& segment, ContentIndexer::Progress progress);
  void fail(StoreError error);

  const IndexFolder& folder_;
  const Extractors& extractors_;
  std::unique_ptr<CatalogueWriter> catalogue_;
  std::optional<RowContents> rows_;
  std::vector<ContentNumber> contents_;    // of the rows of the new segment
  std::vector<std::uint32_t> unseenRows_;  // of it: see RowContents::withUnseenAttributes()
  std::optional<StoreError> distrusted_;
  std::optional<StoreError> error_;
};

}  // namespace vt
