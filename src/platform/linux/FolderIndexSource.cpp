#include "platform/linux/FolderIndexSource.h"

#include <fmt/format.h>

#include <chrono>

#include "metadata/store/IndexFreshness.h"

namespace vt {
namespace {

std::string reasonOf(const StoreError& error) {
  return error.kind == StoreError::Kind::kMissing ? "there is no index" : error.reason;
}

}  // namespace

void FolderIndexSource::refresh() {
  const Result<IndexFolder, StoreError> folder = IndexFolder::open(path_);
  if (!folder) {
    failure_ = reasonOf(folder.error());
    return;
  }
  const Result<Manifest, StoreError> newest = folder->manifest();
  if (newest && manifest_ == *newest) {
    failure_.clear();
    return;
  }
  Result<IndexGeneration, StoreError> generation =
      folder->current(open_ ? &open_->memory : nullptr);
  if (generation) {
    take(std::move(generation).value());
  } else {
    failure_ = reasonOf(generation.error());
  }
}

void FolderIndexSource::take(IndexGeneration generation) {
  Manifest manifest = generation.manifest;
  std::shared_ptr<const OpenIndex> open = openIndex(std::move(generation), *types_);
  if (!open) {
    failure_ = "the index was made with types that are not known here";
    return;
  }
  open_ = std::move(open);
  manifest_ = std::move(manifest);
  failure_.clear();
}

bool FolderIndexSource::isVouchedFor() const {
  const Result<WatcherRecord, StoreError> record = readWatcherRecord(path_);
  return record && vt::isVouchedFor(*manifest_, *record, BootInstant::now());
}

std::shared_ptr<const OpenIndex> FolderIndexSource::freshAt(Date now) {
  const bool isFresh =
      open_ && (freshnessOf(*manifest_, now) == IndexFreshness::kFresh || isVouchedFor());
  return isFresh ? open_ : nullptr;
}

std::string FolderIndexSource::whyNotAt(Date now) const {
  if (!failure_.empty()) return failure_;
  if (freshnessOf(*manifest_, now) == IndexFreshness::kOfTheFuture) {
    return "the index is from the future: the clock was set back";
  }
  const auto age = std::chrono::floor<std::chrono::minutes>(now - knownUntil(*manifest_));
  return fmt::format("the index is {} minutes old", age.count());
}

}  // namespace vt
