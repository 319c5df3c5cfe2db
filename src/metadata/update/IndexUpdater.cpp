#include "metadata/update/IndexUpdater.h"

#include <algorithm>
#include <utility>

#include "metadata/store/GenerationVerifier.h"
#include "metadata/store/MergedSegment.h"
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
  state_.reset();
  Result<IndexGeneration, StoreError> generation = folder_.current();
  if (!generation) return generation.error();
  if (std::optional<StoreError> damage = verifyGeneration(*generation)) return damage;
  return take(std::move(generation).value());
}

std::optional<StoreError> IndexUpdater::take(IndexGeneration generation) {
  std::optional<KnownIndex> index = KnownIndex::of(generation, types_);
  if (!index) {
    return StoreError{StoreError::Kind::kOtherKind,
                      "the index was made with types that are not known here"};
  }
  auto state = std::make_unique<State>(*std::move(index));
  if (extractors_ != nullptr) {
    Result<UpdatedContents, StoreError> contents =
        UpdatedContents::of(folder_, *extractors_, generation);
    if (contents) {
      state->contents = std::move(contents).value();
    } else {
      state->contentError = contents.error();
    }
  }
  state_ = std::move(state);
  return std::nullopt;
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
  bool hasChanged = false;
  if (!changes.empty()) {
    ChangeWalk walk(index, types_, options_.coarsestTick);
    walk.run(changes);
    hasChanged = walk.hasChangedFolders();
  }
  UpdateReport report;
  report.rowsAdded = index.addedCount() - addedBefore;
  report.rowsTakenAway = index.removedCount() - removedBefore;
  hasChanged = hasChanged || report.rowsAdded > 0 || report.rowsTakenAway > 0;
  const Date vouched = std::max(index.manifest().vouched, vouchedUntil.value_or(Date::min()));
  if (hasChanged) {
    if (std::optional<StoreError> error = publish(*state, vouched)) return *std::move(error);
  } else if (vouched != index.manifest().vouched) {
    Manifest manifest = index.manifest();
    manifest.vouched = vouched;
    if (std::optional<StoreError> error = folder_.vouch(lock_, manifest)) return *std::move(error);
    index.take(std::move(manifest));
  }
  state_ = std::move(state);
  if (hasChanged && isWorthMerging()) {
    const Clock::time_point published = Clock::now();
    report.mergeError = merge();
    report.hasMerged = !report.mergeError;
    report.merging = Clock::now() - published;
  }
  if (state_) {
    report.generation = state_->index.manifest().generation;
    report.contentError = state_->contentError;
  }
  report.time = Clock::now() - start;
  return report;
}

std::optional<StoreError> IndexUpdater::publish(State& state, Date vouched) {
  KnownIndex& index = state.index;
  SegmentBuilder built(types_);
  const std::vector<std::uint32_t> added = index.build(built);
  Manifest next = index.manifest();
  next.segments.resize(1);
  next.vouched = vouched;
  std::vector<std::uint32_t> order;
  const Result<Manifest, StoreError> published = folder_.publishSegment(
      lock_, std::move(next),
      [&](FileWriter& file, std::uint64_t generation) {
        return built.write(file, generation, &order);
      },
      [&](const SegmentIdentity& segment) {
        if (!state.contents) return;
        std::vector<std::uint32_t> rows;
        rows.reserve(order.size());
        for (const std::uint32_t at : order) rows.push_back(added[at]);
        if (StoreFailure failure = state.contents->announce(segment, index, rows)) {
          state.failContents(*std::move(failure));
        }
      });
  if (!published) return published.error();
  Result<IndexGeneration, StoreError> generation = folder_.current(&index.generation());
  if (!generation) return generation.error();
  if (state.contents) state.contents->take(*generation);
  index.take(std::move(generation).value());
  return std::nullopt;
}

bool IndexUpdater::isWorthMerging() const {
  const std::uint64_t changed = state_->index.changedRowCount();
  return changed > options_.leastChanged &&
         changed * 1000 >
             std::uint64_t{state_->index.baseRowCount()} * options_.mostChangedPerMille;
}

std::optional<StoreError> IndexUpdater::merge() {
  const IndexGeneration& before = state_->index.generation();
  const MergedSegment merged(before);
  Manifest next = before.manifest;
  next.segments.clear();
  const Result<Manifest, StoreError> published = folder_.publishSegment(
      lock_, std::move(next),
      [&](FileWriter& file, std::uint64_t generation) { return merged.write(file, generation); },
      [&](const SegmentIdentity& segment) {
        if (!state_->contents) return;
        if (StoreFailure failure = state_->contents->announceMerged(segment, merged.order())) {
          state_->failContents(*std::move(failure));
        }
      });
  if (!published) return published.error();
  Result<IndexGeneration, StoreError> generation = folder_.current();
  if (!generation) return generation.error();
  std::optional<KnownIndex> index = KnownIndex::of(*generation, types_);
  if (!index) return std::nullopt;  // never so: it was of these types before
  if (state_->contents) state_->contents->take(*generation);
  state_->index = *std::move(index);
  return std::nullopt;
}

Result<ContentCounts, StoreError> IndexUpdater::lookIntoFiles(ContentIndexer::Progress progress) {
  if (extractors_ == nullptr) return ContentCounts();
  if (std::optional<StoreError> error = load()) return *std::move(error);
  if (!state_->contents) return *state_->contentError;
  Result<ContentCounts, StoreError> counts =
      state_->contents->lookIntoFiles(state_->index.generation(), types_, progress);
  if (!counts) state_->failContents(counts.error());
  return counts;
}

}  // namespace vt
