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
#include "metadata/update/BackgroundRunner.h"
#include "metadata/update/FileChanges.h"
#include "metadata/update/KnownIndex.h"

namespace vt {

/// What an update came to.
struct UpdateReport {
  std::uint64_t generation = 0;     ///< that is in force now
  std::uint64_t rowsAdded = 0;      ///< entries that came or have changed
  std::uint64_t rowsTakenAway = 0;  ///< entries that went, and what the changed ones were before
  std::chrono::duration<double> time{};  ///< of the whole
  /// Until all that was named could be found: of that, without what was done about merging.
  std::chrono::duration<double> publishing{};
  /// A file with several names has changed of which not all could be told: only a crawl finds them.
  bool missesOtherNames = false;
  bool hasMerged = false;  ///< a base that holds what was in base and delta is in force
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
    /// Merges, borrowed; nullptr: the update that finds it due waits until all is merged.
    BackgroundRunner* runner = nullptr;
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

  /// Goes on with merging: begins it when it is due, and publishes what was merged when that is
  /// ready, with what has changed since beside it. apply() does so too, once changes are published;
  /// to be called now and then when there are none. True when it has published. An error leaves the
  /// generation in force, and merging is tried again when as much again has changed.
  Result<bool, StoreError> tendMerge();
  bool isMerging() const;
  /// Why all could not be merged when that was tried last; nothing when it could, or somebody has
  /// published a new base since.
  const std::optional<StoreError>& mergeError() const { return mergeError_; }

  /// Forgets what it knows, also why it could not merge, and ends a merge: a crawl is about to
  /// publish something else.
  void forget();

  /// Looks into files that came or changed, and those that a crawl has left to be looked into.
  /// kMissing, kDamaged or kOtherKind when there is nothing to go on from: a crawl is due.
  /// `progress` ends it by answering false; what is left is looked into the next time.
  Result<ContentCounts, StoreError> lookIntoFiles(ContentIndexer::Progress progress);

 private:
  class State;

  /// Reads the generation in force, unless it is known.
  std::optional<StoreError> load();
  std::optional<StoreError> take(IndexGeneration generation);
  /// Goes on from what the catalogue says, or keeps why it can't.
  void takeContents(State& state);
  /// Publishes what is known beside its base, which is `mergedBase` unless that is nullptr.
  std::optional<StoreError> publish(State& state, Date vouched, const SegmentIdentity* mergedBase);
  /// Goes on from what was published, which calls rows and folders by `layout`.
  std::optional<StoreError> goOn(State& state, KnownIndex::Layout layout);
  std::uint64_t mostUnmergedRows() const;
  std::optional<StoreError> beginMerge();
  std::optional<StoreError> adoptMerged();

  const IndexFolder& folder_;
  const IndexLock& lock_;
  const ContentTypes& types_;
  const Extractors* extractors_;
  Options options_;
  WaitingRunner waiting_;         // for when there is no other
  std::unique_ptr<State> state_;  // of the generation that was published or read last
  std::optional<StoreError> mergeError_;
  std::uint64_t failedMergeRows_ = 0;  // changed ones, when merging last failed
};

}  // namespace vt
