#include "metadata/indexing/ContentRun.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "metadata/catalogue/CatalogueFile.h"
#include "metadata/indexing/AttributesLook.h"
#include "metadata/indexing/LargeHeapPages.h"

namespace vt {
namespace {

// What the text index gathers before it writes, and the pages that the catalogue keeps.
constexpr std::size_t kTextMemoryBytes = std::size_t{48} << 20;

bool isOfNoUse(const StoreError& error) {
  return error.kind == StoreError::Kind::kDamaged || error.kind == StoreError::Kind::kOtherKind;
}

}  // namespace

ContentRun::ContentRun(const IndexFolder& folder, const Extractors& extractors,
                       std::span<const SegmentIdentity> earlier)
    : folder_(folder), extractors_(extractors) {
  StoreFailure failure = open(earlier);
  if (failure && isOfNoUse(*failure)) {
    distrusted_ = *std::exchange(failure, removeCatalogue(folder.path()));
    if (!failure) failure = open(earlier);
  }
  if (failure) fail(*std::move(failure));
}

StoreFailure ContentRun::open(std::span<const SegmentIdentity> earlier) {
  rows_.reset();
  catalogue_.reset();
  Result<std::unique_ptr<CatalogueWriter>, StoreError> opened =
      CatalogueWriter::open(folder_.path());
  if (!opened) return opened.error();
  if (StoreFailure failure = checkCataloguePages(folder_.path())) return failure;
  const Result<bool, StoreError> isMostlyForgotten = (*opened)->isMostlyForgotten();
  if (!isMostlyForgotten) return isMostlyForgotten.error();
  if (*isMostlyForgotten) {
    return StoreError{StoreError::Kind::kOtherKind,
                      folder_.path() + "/" + kCatalogueName + " is mostly of files that are gone"};
  }
  Result<RowContents, StoreError> rows = RowContents::of(**opened, extractors_, earlier);
  if (!rows) return rows.error();
  rows_ = std::move(rows).value();
  catalogue_ = std::move(opened).value();
  return std::nullopt;
}

void ContentRun::fail(StoreError error) {
  rows_.reset();
  catalogue_.reset();
  // What is damaged now is of no use to the next run, which would find out no sooner.
  if (error.kind == StoreError::Kind::kDamaged) {
    static_cast<void>(removeCatalogue(folder_.path()));
  }
  error_ = std::move(error);
}

void ContentRun::announce(const SegmentIdentity& segment, std::span<const std::uint32_t> rows,
                          std::span<const SegmentIdentity> earlier) {
  if (!rows_) return;
  contents_ = rows_->contentsOf(rows);
  unseenRows_ = rows_->withUnseenAttributes(rows);
  std::vector<SegmentIdentity> kept(earlier.begin(), earlier.end());
  kept.push_back(segment);
  StoreFailure failure = catalogue_->setRows(segment, contents_);
  if (!failure) failure = catalogue_->keepRowsOf(kept);
  if (!failure) failure = catalogue_->commit();
  if (failure) fail(*std::move(failure));
}

ContentCounts ContentRun::lookIntoFiles(const Segment& segment, const ContentTypes& types,
                                        bool hasSeenAll, ContentIndexer::Progress progress) {
  if (!rows_) return {};
  const std::vector<ContentNumber> unseen = rows_->unseen();
  rows_.reset();  // the memory is needed elsewhere
  ContentIndexer indexer(*catalogue_, extractors_, types, segment.identity(), segment.columns(),
                         contents_);
  const auto pending = std::ranges::count(contents_, kPendingContent);
  std::optional<LargeHeapPages> pages;
  if (static_cast<std::uint64_t>(pending) > kManyNewTexts) pages.emplace(kTextMemoryBytes);
  StoreFailure failure;
  if (hasSeenAll) failure = catalogue_->remove(unseen);
  if (!failure) failure = lookAtAttributes(segment, progress);
  if (!failure) failure = indexer.run(progress);
  if (failure) fail(*std::move(failure));
  return indexer.counts();
}

StoreFailure ContentRun::lookAtAttributes(const Segment& segment,
                                          ContentIndexer::Progress progress) {
  const Result<bool, StoreError> isDone =
      AttributesLook(*catalogue_, segment.columns(), contents_).run(unseenRows_, progress);
  if (!isDone) return isDone.error();
  // Committed with the first files that are looked into, or the end of that.
  const SegmentIdentity identity = segment.identity();
  return *isDone ? catalogue_->setSeenAttributesOf({&identity, 1}) : StoreFailure();
}

}  // namespace vt
