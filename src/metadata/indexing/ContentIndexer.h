#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/catalogue/CatalogueWriter.h"
#include "metadata/catalogue/ContentRecord.h"
#include "metadata/crawl/FolderOpener.h"
#include "metadata/extract/Extractors.h"
#include "metadata/live/Descriptor.h"
#include "metadata/live/FileStatus.h"
#include "metadata/store/SegmentColumns.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// How far the looking into files has come.
struct ContentCounts {
  std::uint64_t expected = 0;  ///< files that were to be looked into
  std::uint64_t done = 0;      ///< of them
  std::uint64_t failures = 0;  ///< of those: nothing could be found out
  std::uint64_t vanished = 0;  ///< of those: gone, or no files of the sort by now
};

/// Fewer new texts are not worth merging them with all others.
inline constexpr std::uint64_t kManyNewTexts = 20'000;

/// Looks into the files of a segment that are still to be looked into, and keeps what it finds in
/// the catalogue, where searches see it some seconds later.
class ContentIndexer {
 public:
  /// Is told at the beginning and then some times a second how far it has come; ends the run by
  /// answering false.
  using Progress = FunctionRef<bool(const ContentCounts&)>;

  /// Borrows all for its life. `columns` are those of `segment`, whose folders may be told by a
  /// newer one. `contents` has that of each row, as the catalogue was told; it is kept up to date.
  ContentIndexer(CatalogueWriter& catalogue, const Extractors& extractors,
                 const ContentTypes& types, const SegmentIdentity& segment,
                 const SegmentColumns& columns, std::vector<ContentNumber>& contents);

  /// Looks into the files, folder by folder, the newest of each first. What was done until it ended
  /// or failed stays, but for the last seconds before a failure.
  StoreFailure run(Progress progress);

  const ContentCounts& counts() const { return counts_; }

 private:
  using Clock = std::chrono::steady_clock;

  /// A file that an extractor is looking into.
  struct Look {
    std::uint32_t row = 0;
    ContentRecord record;
    Descriptor file;
    std::unique_ptr<Extractor::Look> found;
  };

  std::vector<std::uint32_t> pendingRows() const;
  StoreFailure lookInto(int folder, const std::string& folderPath, std::uint32_t row);
  StoreFailure begin(Look look);
  /// Keeps what was found in the files under way until no more than `most` are.
  StoreFailure finishUntil(std::size_t most);
  StoreFailure keep(Look look);
  /// What is due some times a second, and while a file takes long. Sets isEnded_.
  void report();
  StoreFailure commit();

  CatalogueWriter& catalogue_;
  const Extractors& extractors_;
  SegmentIdentity segment_;
  const SegmentColumns& columns_;
  std::vector<ContentNumber>& contents_;
  std::vector<std::optional<ContentTypeId>> types_;  // by the segment's numbers
  FolderOpener opener_;
  // Files with several names that were looked into: one look is enough.
  std::unordered_map<ContentIdentity, ContentNumber, ContentIdentityHash> linked_;
  std::deque<Look> looks_;  // the longest under way first
  ContentCounts counts_;
  // While run() is called.
  Progress* progress_ = nullptr;
  Clock::time_point reported_;
  bool isEnded_ = false;
};

}  // namespace vt
