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
#include "metadata/indexing/FileOrigins.h"
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

/// Fewer new texts are worth neither merging them with all others nor large pages of memory.
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

  /// Looks into the files: while others look into theirs, those of one origin one after the other,
  /// this process into its own; folder by folder, the newest of each first. What was done until it
  /// ended or failed stays, but for the last seconds before a failure.
  StoreFailure run(Progress progress);

  const ContentCounts& counts() const { return counts_; }

 private:
  using Clock = std::chrono::steady_clock;

  /// A file that an extractor is looking into, or will be.
  struct Look {
    std::uint32_t row = 0;
    ContentRecord record;
    FileOrigin origin = kOwnOrigin;
    Descriptor file;
    std::unique_ptr<Extractor::Look> found;
  };

  /// Rows in the order in which they are looked into, those behind `next` still are.
  struct Queue {
    std::vector<std::uint32_t> rows;
    std::size_t next = 0;
    // The folder of the row before.
    std::uint32_t folder = kNoFolder;
    std::string folderPath;
    Descriptor open;

    bool isEmpty() const { return next == rows.size(); }
  };

  void queuePendingRows();
  Extractor* extractorOf(std::uint32_t row) const;
  /// Looks into files until all are done, or the run is ended.
  StoreFailure work();
  /// Opens the next file of the queue; nothing when it has gone.
  std::optional<Look> openNext(Queue& queue);
  /// Has its extractor begin. False when that must finish others first.
  Result<bool, StoreError> begin(Look& look);
  /// Waits for the file that is longest under way, no longer than `patience`, and keeps what was
  /// found in it.
  StoreFailure finishFirst(std::chrono::milliseconds patience);
  StoreFailure keep(Look look);
  StoreFailure commitWhenDue();
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
  FileOrigins origins_;
  Queue here_;                // files that are looked into by this process
  Queue elsewhere_;           // and by others, meanwhile
  std::deque<Look> looks_;    // of the latter, the longest under way first
  std::optional<Look> next_;  // which waits for one of those
  ContentCounts counts_;
  // While run() is called.
  Progress* progress_ = nullptr;
  Clock::time_point reported_;
  Clock::time_point committed_;
  bool isEnded_ = false;
};

}  // namespace vt
