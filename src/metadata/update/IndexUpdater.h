#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "foundation/Date.h"
#include "foundation/Result.h"
#include "metadata/extract/Extractors.h"
#include "metadata/indexing/ContentIndexer.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/types/ContentTypes.h"
#include "metadata/update/FileChanges.h"

namespace vt {

/// What an update came to.
struct UpdateReport {
  std::uint64_t generation = 0;     ///< that is in force now
  std::uint64_t rowsAdded = 0;      ///< entries that came or have changed
  std::uint64_t rowsTakenAway = 0;  ///< entries that went, and what the changed ones were before
  bool hasMerged = false;           ///< all is in one segment again
  std::chrono::duration<double> time{};     ///< of the whole, merging included
  std::chrono::duration<double> merging{};  ///< of that
  /// Why all could not be merged; the generation is in force all the same.
  std::optional<StoreError> mergeError;
  /// Why files are not looked into any more; names are found all the same.
  std::optional<StoreError> contentError;
};

/// Brings the newest generation of an index up to date where files have changed, without crawling
/// the rest: what changed is published beside what did not, until that is worth merging.
class IndexUpdater {
 public:
  struct Options {
    /// By how much stamps of files may be behind the clock: what changed so shortly before it was
    /// last looked at may have changed again without a trace.
    std::chrono::microseconds coarsestTick = std::chrono::seconds(2);
    /// All is merged when changed and gone files together are more than so many of a thousand.
    std::uint32_t mostChangedPerMille = 20;
    /// But not when there are no more than these, which take no time worth speaking of.
    std::uint32_t leastChanged = 1000;
  };

  /// Borrows all for its life. Without `extractors` no file is looked into. Reads nothing yet.
  IndexUpdater(const IndexFolder& folder, const IndexLock& lock, const ContentTypes& types,
               const Extractors* extractors = nullptr);
  IndexUpdater(const IndexFolder& folder, const IndexLock& lock, const ContentTypes& types,
               const Extractors* extractors, Options options);
  IndexUpdater(const IndexUpdater&) = delete;
  IndexUpdater& operator=(const IndexUpdater&) = delete;
  ~IndexUpdater();

  /// Looks at what may have changed and publishes the next generation; none when nothing has.
  /// With `vouchedUntil`, by the clock of this machine, the caller vouches that all that changed
  /// before is named here or was in earlier changes: the generation counts as fresh from then on.
  ///
  /// kMissing, kDamaged or kOtherKind when there is no generation to go on from: a crawl is due.
  /// Any error leaves the last generation in force, and the changes are still to be applied.
  Result<UpdateReport, StoreError> apply(const FileChanges& changes,
                                         std::optional<Date> vouchedUntil = std::nullopt);

  /// Looks into files that came or changed, and those that a crawl has left to be looked into.
  /// `progress` ends it by answering false; what is left is looked into the next time.
  Result<ContentCounts, StoreError> lookIntoFiles(ContentIndexer::Progress progress);

 private:
  class State;

  /// Reads the generation in force, unless it is known.
  std::optional<StoreError> load();
  std::optional<StoreError> take(IndexGeneration generation);
  std::optional<StoreError> publish(State& state, Date vouched);
  bool isWorthMerging() const;
  std::optional<StoreError> merge();

  const IndexFolder& folder_;
  const IndexLock& lock_;
  const ContentTypes& types_;
  const Extractors* extractors_;
  Options options_;
  std::unique_ptr<State> state_;  // of the generation that was published or read last
};

}  // namespace vt
