#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "foundation/Result.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/update/BackgroundRunner.h"
#include "metadata/update/KnownIndex.h"
#include "metadata/update/SharedMemory.h"

namespace vt {

/// Writes what a generation holds as one base, aside, while newer generations are published.
class BaseMerge {
 public:
  /// Starts it with the generation that `index` has published or read last, which has a delta.
  /// Borrows the others for its life.
  static Result<std::unique_ptr<BaseMerge>, StoreError> start(const IndexFolder& folder,
                                                              const IndexLock& lock,
                                                              BackgroundRunner& runner,
                                                              const KnownIndex& index);
  BaseMerge(const BaseMerge&) = delete;
  BaseMerge& operator=(const BaseMerge&) = delete;
  /// Ends it; what it has written aside goes.
  ~BaseMerge();

  bool isRunning();

  // Once it does not run.

  /// What it has written aside, or why it could not.
  Result<SegmentIdentity, StoreError> written();
  /// Which row each of the merged ones was, see MergedSegment.
  std::span<const std::uint32_t> order() const;
  /// The generation it was made of, as the index knew it.
  const KnownIndex::Mark& mark() const { return mark_; }
  std::uint64_t generation() const { return generation_.manifest.generation; }

 private:
  struct Outcome;

  BaseMerge(const IndexFolder& folder, const IndexLock& lock, BackgroundRunner& runner,
            const KnownIndex& index, SharedMemory shared);

  /// The work itself, which may be another process's.
  void run() const;
  Outcome& outcome() const;
  std::span<std::uint32_t> sharedOrder() const;

  const IndexFolder& folder_;
  const IndexLock& lock_;
  BackgroundRunner& runner_;
  IndexGeneration generation_;
  KnownIndex::Mark mark_;
  SharedMemory shared_;
};

}  // namespace vt
