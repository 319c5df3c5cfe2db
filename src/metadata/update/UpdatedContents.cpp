#include "metadata/update/UpdatedContents.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "metadata/indexing/AttributesLook.h"
#include "metadata/indexing/RowContents.h"

namespace vt {
namespace {

// Fewer are left to the next crawl: to find out which of them no row has takes a look at all rows.
constexpr std::size_t kManyGone = 1000;

/// What has a crawl come, which makes the catalogue anew.
StoreError mostlyForgottenError() {
  return {StoreError::Kind::kOtherKind, "the catalogue is mostly of files that are gone"};
}

/// Why a catalogue is not gone on with that says nothing of the base.
StoreError missingError(CatalogueWriter& catalogue, const std::string& path, const Segment& base) {
  // While nothing can be written, a crawl would come to the same.
  const SegmentIdentity identity = base.identity();
  StoreFailure failure = catalogue.keepRowsOf({&identity, 1});
  if (!failure) failure = catalogue.commit();
  if (failure) return *std::move(failure);
  return {StoreError::Kind::kMissing, fmt::format("{} says nothing of {}", path, base.shownPath())};
}

}  // namespace

Result<UpdatedContents, StoreError> UpdatedContents::of(const IndexFolder& folder,
                                                        const Extractors& extractors,
                                                        const KnownIndex& index) {
  const auto reader = CatalogueReader::open(folder.path());
  if (!reader) return reader.error();
  auto writer = CatalogueWriter::open(folder.path());
  if (!writer) return writer.error();
  const Segment& segment = *index.generation().segment;
  auto base = (*reader)->rowsOf(segment.identity(), segment.columns().rowCount());
  if (!base) return base.error();
  if (!*base) return missingError(**writer, (*reader)->path(), segment);
  UpdatedContents contents(std::move(writer).value(), extractors);
  contents.base_ = *std::move(*base);
  contents.segments_.push_back(segment.identity());
  const Result<bool, StoreError> isBaseSeen =
      contents.catalogue_->hasSeenAttributesOf(contents.segments_);
  if (!isBaseSeen) return isBaseSeen.error();
  contents.hasSeenRest_ = *isBaseSeen;
  if (StoreFailure failure = contents.takeDelta(**reader, index)) return *std::move(failure);
  // Whoever published the delta may have ended before all of it was looked at.
  const Result<bool, StoreError> areSeen =
      contents.catalogue_->hasSeenAttributesOf(contents.segments_);
  if (!areSeen) return areSeen.error();
  if (!*areSeen) {
    contents.unseenOfDelta_.insert(contents.deltaRows_.begin(), contents.deltaRows_.end());
  }
  return contents;
}

StoreFailure UpdatedContents::takeDelta(CatalogueReader& catalogue, const KnownIndex& index) {
  if (!index.generation().delta) return std::nullopt;
  const Segment& delta = *index.generation().delta;
  segments_.push_back(delta.identity());
  deltaRows_ = index.layout().rows;
  auto rows = catalogue.rowsOf(delta.identity(), delta.columns().rowCount());
  if (!rows) return rows.error();
  if (*rows) {
    delta_ = *std::move(*rows);
    return std::nullopt;
  }
  // It could not be written when the delta was published.
  Result<std::vector<ContentNumber>, StoreError> found = contentsOf(index, deltaRows_);
  if (!found) return found.error();
  delta_ = std::move(found).value();
  if (StoreFailure failure = catalogue_->setRows(delta.identity(), delta_)) return failure;
  return catalogue_->commit();
}

Result<std::vector<ContentNumber>, StoreError> UpdatedContents::contentsOf(
    const KnownIndex& index, std::span<const std::uint32_t> rows) {
  std::unordered_map<std::uint32_t, ContentNumber> known;
  for (std::size_t at = 0; at < delta_.size(); ++at) known.emplace(deltaRows_[at], delta_[at]);
  std::vector<ContentNumber> contents;
  contents.reserve(rows.size());
  for (const std::uint32_t row : rows) {
    if (const auto before = known.find(row); before != known.end()) {
      contents.push_back(before->second);
      continue;
    }
    bool isUnseen = false;
    const auto content = contentOf(index.statusOf(row), index.typeOf(row), isUnseen);
    if (!content) return content.error();
    contents.push_back(*content);
    if (isUnseen) unseenOfDelta_.insert(row);
  }
  return contents;
}

Result<ContentNumber, StoreError> UpdatedContents::contentOf(const FileStatus& status,
                                                             ContentTypeId type, bool& isUnseen) {
  if (!status.isRegularFile()) return kWithoutContent;
  const Extractor* const extractor = extractors_->forType(type);
  const auto found = catalogue_->find(identityOf(status));
  if (!found) return found.error();
  const std::optional<ContentRecord>& known = *found;
  const ContentVersion version = versionOf(status);
  const bool isSeen = known && known->version.attributesChanged == version.attributesChanged;
  if (extractor == nullptr) {
    isUnseen = !isSeen;
    return known && known->extractor.empty() ? known->number : kWithoutContent;
  }
  const bool isCurrent =
      known && known->version.hasSameBytesAs(version) &&
      extractors_->named(known->extractor, known->extractorVersion) == extractor &&
      (!known->failure || known->failure->isLasting());
  isUnseen = isCurrent && !isSeen;
  return isCurrent ? known->number : kPendingContent;
}

StoreFailure UpdatedContents::announce(const SegmentIdentity& delta, const KnownIndex& index,
                                       std::span<const std::uint32_t> rows) {
  Result<std::vector<ContentNumber>, StoreError> contents = contentsOf(index, rows);
  if (!contents) return contents.error();
  noteGone(index);
  announced_ = std::move(contents).value();
  announcedRows_.assign(rows.begin(), rows.end());
  if (StoreFailure failure = catalogue_->setRows(delta, announced_)) return failure;
  std::vector<SegmentIdentity> kept = segments_;
  kept.push_back(delta);
  if (StoreFailure failure = catalogue_->keepRowsOf(kept)) return failure;
  return catalogue_->commit();
}

void UpdatedContents::noteGone(const KnownIndex& index) {
  if (index.removedRows().empty()) return;
  const std::vector<ContentNumber> newer = newerContents();
  for (const std::uint32_t row : index.removedRows()) {
    ContentNumber content = kWithoutContent;
    if (row < base_.size()) {
      content = base_[row];
    } else if (row - base_.size() < newer.size()) {
      content = newer[row - base_.size()];
    }
    if (content != kWithoutContent && content != kPendingContent) gone_.push_back(content);
  }
}

StoreFailure UpdatedContents::forgetGone(const IndexGeneration& generation) {
  if (gone_.size() < kManyGone) return std::nullopt;
  Bitmap gone(std::size_t{*std::ranges::max_element(gone_)} + 1);
  for (const ContentNumber content : gone_) gone.add(content);
  Bitmap kept(gone.size());
  for (const std::vector<ContentNumber>* const contents : {&base_, &delta_}) {
    for (const ContentNumber content : *contents) {
      if (content < gone.size() && gone.contains(content)) kept.add(content);
    }
  }
  gone -= kept;  // under another name, or where the file was moved to
  gone_.clear();
  gone.forEach([&](std::size_t content) { gone_.push_back(static_cast<ContentNumber>(content)); });
  const Segment& tables = generation.delta ? *generation.delta : *generation.segment;
  std::unordered_set<std::uint64_t> devices;
  for (std::uint32_t folder = 0; folder < tables.columns().folderCount(); ++folder) {
    devices.insert(tables.stampOf(folder).device);
  }
  StoreFailure failure =
      catalogue_->remove(gone_, [&](std::uint64_t device) { return devices.contains(device); });
  gone_.clear();
  return failure ? failure : catalogue_->commit();
}

std::vector<ContentNumber> UpdatedContents::newerContents() const {
  std::vector<ContentNumber> contents;
  for (std::size_t at = 0; at < delta_.size(); ++at) {
    const std::size_t place = deltaRows_[at] - base_.size();
    if (place >= contents.size()) contents.resize(place + 1, kWithoutContent);
    contents[place] = delta_[at];
  }
  return contents;
}

std::vector<ContentNumber> UpdatedContents::contentsByRow() const {
  std::vector<ContentNumber> contents = base_;
  const std::vector<ContentNumber> newer = newerContents();
  contents.insert(contents.end(), newer.begin(), newer.end());
  return contents;
}

StoreFailure UpdatedContents::rebase(const SegmentIdentity& base, std::size_t baseRowCount,
                                     std::span<const std::uint32_t> before) {
  const std::vector<ContentNumber> contents = contentsByRow();
  std::unordered_set<std::uint32_t> unseen = std::move(unseenOfDelta_);
  unseen.insert(unseenOfBase_.begin(), unseenOfBase_.end());
  unseenOfBase_.clear();
  unseenOfDelta_.clear();
  base_.clear();
  base_.reserve(baseRowCount);
  delta_.clear();
  deltaRows_.clear();
  for (std::uint32_t row = 0; row < before.size(); ++row) {
    const std::uint32_t was = before[row];
    // Rows that are dead by now may be of no delta any more.
    const ContentNumber content = was < contents.size() ? contents[was] : kWithoutContent;
    const bool isUnseen = !unseen.empty() && unseen.contains(was);
    if (row < baseRowCount) {
      base_.push_back(content);
      if (isUnseen) unseenOfBase_.push_back(row);
    } else {
      delta_.push_back(content);
      deltaRows_.push_back(row);
      if (isUnseen) unseenOfDelta_.insert(row);
    }
  }
  if (StoreFailure failure = catalogue_->setRows(base, base_)) return failure;
  segments_.push_back(base);
  if (StoreFailure failure = catalogue_->keepRowsOf(segments_)) return failure;
  return catalogue_->commit();
}

void UpdatedContents::take(const IndexGeneration& generation) {
  segments_ = {generation.segment->identity()};
  delta_.clear();
  deltaRows_.clear();
  if (generation.delta) {
    segments_.push_back(generation.delta->identity());
    delta_ = std::move(announced_);
    deltaRows_ = std::move(announcedRows_);
  }
  announced_.clear();
  announcedRows_.clear();
}

Result<ContentCounts, StoreError> UpdatedContents::lookIntoFiles(
    const IndexGeneration& generation, const ContentTypes& types,
    ContentIndexer::Progress progress) {
  const GenerationColumns columns = columnsOf(generation);
  columns.dead.forEach([&](std::size_t row) { base_[row] = kWithoutContent; });
  ContentCounts counts;
  bool goesOn = true;
  const auto look = [&](const Segment& segment, const SegmentColumns& rows,
                        std::vector<ContentNumber>& contents) -> StoreFailure {
    const auto pending = static_cast<std::uint64_t>(std::ranges::count(contents, kPendingContent));
    if (!goesOn || pending == 0) {
      counts.expected += pending;
      return std::nullopt;
    }
    ContentIndexer indexer(*catalogue_, *extractors_, types, segment.identity(), rows, contents);
    StoreFailure failure =
        indexer.run([&](const ContentCounts& now) { return goesOn = progress(now); });
    counts.expected += indexer.counts().expected;
    counts.done += indexer.counts().done;
    counts.failures += indexer.counts().failures;
    counts.vanished += indexer.counts().vanished;
    return failure;
  };
  const Result<bool, StoreError> isDone = lookAtAttributes(generation, columns, progress);
  if (!isDone) return isDone.error();
  goesOn = *isDone;
  counts.expected = unseenOfBase_.size() + unseenOfDelta_.size();
  StoreFailure failure;
  if (generation.delta) failure = look(*generation.delta, columns.delta, delta_);
  if (!failure) failure = look(*generation.segment, columns.base, base_);
  newTexts_ += counts.done;
  if (!failure) failure = forgetGone(generation);
  if (!failure && counts.done == counts.expected && newTexts_ > kManyNewTexts) {
    newTexts_ = 0;
    const Result<bool, StoreError> isMostlyForgotten = catalogue_->isMostlyForgotten();
    if (!isMostlyForgotten) return isMostlyForgotten.error();
    if (*isMostlyForgotten) return mostlyForgottenError();
    failure = catalogue_->mergeText();
  }
  if (failure) return *std::move(failure);
  return counts;
}

Result<bool, StoreError> UpdatedContents::lookAtAttributes(const IndexGeneration& generation,
                                                           const GenerationColumns& columns,
                                                           ContentIndexer::Progress progress) {
  std::vector<std::uint32_t> ofDelta;
  for (std::uint32_t at = 0; generation.delta && at < deltaRows_.size(); ++at) {
    if (unseenOfDelta_.contains(deltaRows_[at])) ofDelta.push_back(at);
  }
  if (ofDelta.empty() && unseenOfBase_.empty()) return true;
  const auto look = [&](const SegmentIdentity& segment, const SegmentColumns& rows,
                        std::span<const std::uint32_t> unseen,
                        std::vector<ContentNumber>& contents) -> Result<bool, StoreError> {
    if (unseen.empty()) return true;
    Result<bool, StoreError> isDone =
        AttributesLook(*catalogue_, rows, contents).run(unseen, progress);
    if (!isDone) return isDone;
    if (StoreFailure failure = catalogue_->setRows(segment, contents)) return *std::move(failure);
    return isDone;
  };
  Result<bool, StoreError> isDone = true;
  if (generation.delta) {
    isDone = look(generation.delta->identity(), columns.delta, ofDelta, delta_);
  }
  if (isDone && *isDone) {
    isDone = look(generation.segment->identity(), columns.base, unseenOfBase_, base_);
  }
  if (!isDone) return isDone;
  if (*isDone) {
    unseenOfBase_.clear();
    unseenOfDelta_.clear();
    if (hasSeenRest_) {
      if (StoreFailure failure = catalogue_->setSeenAttributesOf(segments_)) {
        return *std::move(failure);
      }
    }
  }
  if (StoreFailure failure = catalogue_->commit()) return *std::move(failure);
  return isDone;
}

}  // namespace vt
