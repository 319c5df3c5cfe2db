#include "metadata/update/IndexUpdater.h"

#include <algorithm>
#include <utility>

#include "metadata/store/GenerationVerifier.h"
#include "metadata/update/BaseMerge.h"
#include "metadata/update/ChangeWalk.h"
#include "metadata/update/KnownIndex.h"
#include "metadata/update/UpdatedContents.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

/// What is known of the generation in force.
class IndexUpdater::State {
 public:
  explicit State(KnownIndex known) : index(std::move(known)) {}

  KnownIndex index;
  std::optional<UpdatedContents> contents;
  std::optional<StoreError> contentError;
  std::unique_ptr<BaseMerge> merge;  // of this generation, or one before that it goes on from

  void failContents(StoreError error) {
    contents.reset();
    contentError = std::move(error);
  }
};

IndexUpdater::IndexUpdater(const IndexFolder& folder, const IndexLock& lock,
                           const ContentTypes& types, const Extractors* extractors)
    : IndexUpdater(folder, lock, types, extractors, Options{}) {}

IndexUpdater::IndexUpdater(const IndexFolder& folder, const IndexLock& lock,
                           const ContentTypes& types, const Extractors* extractors, Options options)
    : folder_(folder), lock_(lock), types_(types), extractors_(extractors), options_(options) {}

IndexUpdater::~IndexUpdater() = default;

std::optional<StoreError> IndexUpdater::load() {
  const Result<Manifest, StoreError> manifest = folder_.manifest();
  if (!manifest) {
    state_.reset();
    return manifest.error();
  }
  if (state_ && state_->index.manifest() == *manifest) return std::nullopt;
  if (state_) forget();
  folder_.removeAside(lock_);
  Result<IndexGeneration, StoreError> generation = folder_.current();
  if (!generation) return generation.error();
  std::optional<StoreError> damage = verifyGeneration(*generation);
  generation->segment->dropPages();  // of which few are looked at again
  if (damage) return damage;
  return take(std::move(generation).value());
}

std::optional<StoreError> IndexUpdater::take(IndexGeneration generation) {
  std::optional<KnownIndex> index = KnownIndex::of(std::move(generation), types_);
  if (!index) {
    return StoreError{StoreError::Kind::kOtherKind,
                      "the index was made with types that are not known here"};
  }
  auto state = std::make_unique<State>(*std::move(index));
  if (extractors_ != nullptr) takeContents(*state);
  state_ = std::move(state);
  return std::nullopt;
}

void IndexUpdater::takeContents(State& state) {
  Result<UpdatedContents, StoreError> contents =
      UpdatedContents::of(folder_, *extractors_, state.index);
  if (contents) {
    state.contents = std::move(contents).value();
    state.contentError.reset();
  } else {
    state.failContents(contents.error());
  }
}

Result<UpdateReport, StoreError> IndexUpdater::apply(const FileChanges& changes,
                                                     std::optional<Date> vouchedUntil) {
  const Clock::time_point start = Clock::now();
  if (std::optional<StoreError> error = load()) return *std::move(error);
  // Put back when all is well: what is half done is read again from the index.
  std::unique_ptr<State> state = std::move(state_);
  KnownIndex& index = state->index;
  const std::uint64_t addedBefore = index.addedCount();
  const std::uint64_t removedBefore = index.removedCount();
  UpdateReport report;
  bool hasChanged = false;
  if (!changes.empty()) {
    ChangeWalk walk(index, types_, options_.coarsestTick);
    walk.run(changes);
    hasChanged = walk.hasChangedFolders();
    report.missesOtherNames = walk.missesOtherNames();
  }
  report.rowsAdded = index.addedCount() - addedBefore;
  report.rowsTakenAway = index.removedCount() - removedBefore;
  hasChanged = hasChanged || report.rowsAdded > 0 || report.rowsTakenAway > 0;
  const Date vouched = std::max(index.manifest().vouched, vouchedUntil.value_or(Date::min()));
  if (hasChanged) {
    if (std::optional<StoreError> error = publish(*state, vouched, /*mergedBase=*/nullptr))
      return *std::move(error);
  } else if (vouched != index.manifest().vouched) {
    Manifest manifest = index.manifest();
    manifest.vouched = vouched;
    if (std::optional<StoreError> error = folder_.vouch(lock_, manifest)) return *std::move(error);
    index.take(std::move(manifest));
  }
  state_ = std::move(state);
  report.publishing = Clock::now() - start;
  const Result<bool, StoreError> hasMerged = tendMerge();
  report.hasMerged = hasMerged && *hasMerged;
  if (!hasMerged) report.mergeError = hasMerged.error();
  if (state_) {
    report.generation = state_->index.manifest().generation;
    report.contentError = state_->contentError;
  }
  report.time = Clock::now() - start;
  return report;
}

std::optional<StoreError> IndexUpdater::publish(State& state, Date vouched,
                                                const SegmentIdentity* mergedBase) {
  KnownIndex& index = state.index;
  SegmentBuilder built(types_);
  const KnownIndex::Layout added = index.build(built);
  KnownIndex::Layout layout{{}, added.folders};
  Manifest next = index.manifest();
  next.segments.resize(1);
  next.vouched = vouched;
  std::vector<std::uint32_t> order;
  const auto write = [&](FileWriter& file, std::uint64_t generation) {
    return built.write(file, generation, &order);
  };
  const auto announce = [&](const SegmentIdentity& segment) {
    layout.rows.reserve(order.size());
    for (const std::uint32_t at : order) layout.rows.push_back(added.rows[at]);
    if (!state.contents) return;
    if (StoreFailure failure = state.contents->announce(segment, index, layout.rows)) {
      state.failContents(*std::move(failure));
    }
  };
  const IndexFolder::WriteSegment delta = write;
  const Result<Manifest, StoreError> published =
      mergedBase == nullptr
          ? folder_.publishSegment(lock_, std::move(next), delta, announce)
          : folder_.publishAside(lock_, std::move(next), *mergedBase, &delta, announce);
  if (!published) return published.error();
  return goOn(state, std::move(layout));
}

std::optional<StoreError> IndexUpdater::goOn(State& state, KnownIndex::Layout layout) {
  Result<IndexGeneration, StoreError> generation = folder_.current(&state.index.generation());
  if (!generation) return generation.error();
  if (state.contents) state.contents->take(*generation);
  state.index.take(std::move(generation).value(), std::move(layout));
  return std::nullopt;
}

std::uint64_t IndexUpdater::mostUnmergedRows() const {
  return std::max<std::uint64_t>(
      options_.leastChanged,
      std::uint64_t{state_->index.baseRowCount()} * options_.mostChangedPerMille / 1000);
}

Result<bool, StoreError> IndexUpdater::tendMerge() {
  if (!state_) return false;
  std::optional<StoreError> error;
  const std::uint64_t changed = state_->index.changedRowCount();
  if (!state_->merge) {
    if (!state_->index.generation().delta || changed <= mostUnmergedRows() + failedMergeRows_) {
      return false;
    }
    error = beginMerge();
  }
  if (!error) {
    if (state_->merge->isRunning()) return false;
    const Result<Manifest, StoreError> manifest = folder_.manifest();
    if (!manifest || *manifest != state_->index.manifest()) {
      forget();  // of what somebody else has published since, nothing is merged
      return false;
    }
    error = adoptMerged();
  }
  mergeError_ = error;
  failedMergeRows_ = error ? changed : 0;
  if (error) return *std::move(error);
  return true;
}

bool IndexUpdater::isMerging() const { return state_ && state_->merge; }

void IndexUpdater::forget() {
  state_.reset();
  mergeError_.reset();
  failedMergeRows_ = 0;
}

std::optional<StoreError> IndexUpdater::beginMerge() {
  BackgroundRunner& runner = options_.runner == nullptr ? waiting_ : *options_.runner;
  Result<std::unique_ptr<BaseMerge>, StoreError> merge =
      BaseMerge::start(folder_, lock_, runner, state_->index);
  if (!merge) return merge.error();
  state_->merge = std::move(merge).value();
  return std::nullopt;
}

std::optional<StoreError> IndexUpdater::adoptMerged() {
  const std::unique_ptr<BaseMerge> merge = std::move(state_->merge);
  const Result<SegmentIdentity, StoreError> written = merge->written();
  if (!written) return written.error();
  const Result<std::shared_ptr<const Segment>, StoreError> merged = folder_.openAside();
  if (!merged) return merged.error();
  // Put back when all is well: what is half done is read again from the index.
  std::unique_ptr<State> state = std::move(state_);
  KnownIndex& index = state->index;
  const std::optional<std::vector<std::uint32_t>> before =
      index.rebase(*merged, merge->order(), merge->mark(), types_);
  if (!before || (*merged)->identity() != *written) {
    return damageError((*merged)->shownPath(), "it is not what was merged");
  }
  if (state->contents) {
    if (StoreFailure failure = state->contents->rebase(*written, index.baseRowCount(), *before)) {
      state->failContents(*std::move(failure));
    }
  }
  std::optional<StoreError> error;
  if (merge->generation() != index.manifest().generation) {
    error = publish(*state, index.manifest().vouched, &*written);
  } else {
    const Result<Manifest, StoreError> published = folder_.publishAside(
        lock_, index.manifest(), *written, /*delta=*/nullptr, [](const SegmentIdentity&) {});
    error = published ? goOn(*state, index.layout()) : published.error();
  }
  if (!error) state_ = std::move(state);
  return error;
}

Result<ContentCounts, StoreError> IndexUpdater::lookIntoFiles(ContentIndexer::Progress progress) {
  if (extractors_ == nullptr) return ContentCounts();
  if (std::optional<StoreError> error = load()) return *std::move(error);
  // There may be space by now, or whatever else was missing.
  if (!state_->contents) takeContents(*state_);
  if (!state_->contents) return *state_->contentError;
  Result<ContentCounts, StoreError> counts =
      state_->contents->lookIntoFiles(state_->index.generation(), types_, progress);
  if (!counts) state_->failContents(counts.error());
  return counts;
}

}  // namespace vt
