#include "metadata/update/BaseMerge.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>
#include <utility>

#include "metadata/store/MergedSegment.h"

namespace vt {

/// What the work leaves to be read, before the order.
struct BaseMerge::Outcome {
  bool isWritten;
  bool isFailure;
  StoreError::Kind kind;        // of the failure
  std::array<char, 1024> text;  // its reason, ended by NUL
  SegmentIdentity identity;
  std::uint32_t rowCount;
};

Result<std::unique_ptr<BaseMerge>, StoreError> BaseMerge::start(const IndexFolder& folder,
                                                                const IndexLock& lock,
                                                                BackgroundRunner& runner,
                                                                const KnownIndex& index) {
  const IndexGeneration& generation = index.generation();
  const std::size_t mostRows =
      generation.segment->columns().rowCount() + generation.delta->columns().rowCount();
  Result<SharedMemory, StoreError> shared =
      SharedMemory::of(sizeof(Outcome) + mostRows * sizeof(std::uint32_t));
  if (!shared) return shared.error();
  std::unique_ptr<BaseMerge> merge(
      new BaseMerge(folder, lock, runner, index, std::move(shared).value()));
  std::optional<StoreError> error =
      runner.start([work = merge.get()] { work->run(); }, folder.descriptor());
  if (error) return *std::move(error);
  return merge;
}

BaseMerge::BaseMerge(const IndexFolder& folder, const IndexLock& lock, BackgroundRunner& runner,
                     const KnownIndex& index, SharedMemory shared)
    : folder_(folder),
      lock_(lock),
      runner_(runner),
      generation_(index.generation()),
      mark_(index.mark()),
      shared_(std::move(shared)) {}

BaseMerge::~BaseMerge() {
  runner_.end();
  folder_.removeAside(lock_);
}

BaseMerge::Outcome& BaseMerge::outcome() const {
  return *reinterpret_cast<Outcome*>(shared_.bytes().data());
}

std::span<std::uint32_t> BaseMerge::sharedOrder() const {
  const std::span<std::byte> rest = shared_.bytes().subspan(sizeof(Outcome));
  return {reinterpret_cast<std::uint32_t*>(rest.data()), rest.size() / sizeof(std::uint32_t)};
}

void BaseMerge::run() const {
  Outcome& told = outcome();
  const auto fail = [&](const StoreError& error) {
    told.kind = error.kind;
    // The last byte stays zero.
    error.reason.copy(told.text.data(), told.text.size() - 1);
    told.isFailure = true;
  };
  try {
    const MergedSegment merged(generation_);
    std::ranges::copy(merged.order(), sharedOrder().begin());
    told.rowCount = static_cast<std::uint32_t>(merged.order().size());
    const Result<SegmentIdentity, StoreError> written = folder_.writeAside(
        generation(),
        [&](FileWriter& file, std::uint64_t number) { return merged.write(file, number); });
    if (!written) return fail(written.error());
    told.identity = *written;
    told.isWritten = true;
  } catch (const std::exception& error) {
    fail({StoreError::Kind::kFailed, error.what()});  // no memory
  }
}

bool BaseMerge::isRunning() { return !runner_.ended(); }

Result<SegmentIdentity, StoreError> BaseMerge::written() {
  const Outcome& told = outcome();
  if (told.isFailure) return StoreError{told.kind, told.text.data()};
  if (told.isWritten) return told.identity;
  return StoreError{StoreError::Kind::kFailed,
                    "the process that merged it ended too soon: " + runner_.ended().value_or("")};
}

std::span<const std::uint32_t> BaseMerge::order() const {
  return sharedOrder().first(outcome().rowCount);
}

}  // namespace vt
