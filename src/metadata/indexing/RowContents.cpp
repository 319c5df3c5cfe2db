#include "metadata/indexing/RowContents.h"

#include <algorithm>
#include <tuple>

namespace vt {
namespace {

bool isBefore(const ContentIdentity& a, const ContentIdentity& b) {
  return std::tie(a.device, a.inode) < std::tie(b.device, b.inode);
}

}  // namespace

Result<RowContents, StoreError> RowContents::of(CatalogueWriter& catalogue,
                                                const Extractors& extractors,
                                                std::span<const SegmentIdentity> earlier) {
  RowContents contents(extractors);
  const Result<bool, StoreError> hasSeen = catalogue.hasSeenAttributesOf(earlier);
  if (!hasSeen) return hasSeen.error();
  contents.hasSeenAttributes_ = *hasSeen;
  const StoreFailure failure = catalogue.forEach([&](const ContentRecord& record) {
    const bool isToBeTriedAgain = record.failure && !record.failure->isLasting();
    (record.extractor.empty() ? contents.tagged_ : contents.known_)
        .push_back({.identity = record.identity,
                    .version = record.version,
                    .number = record.number,
                    .extractor = isToBeTriedAgain ? nullptr
                                                  : extractors.named(record.extractor,
                                                                     record.extractorVersion)});
  });
  if (failure) return *failure;
  std::ranges::sort(contents.known_, isBefore, &Known::identity);
  std::ranges::sort(contents.tagged_, isBefore, &Known::identity);
  return contents;
}

void RowContents::add(const CrawledEntry& entry) {
  devices_.insert(entry.status.device);
  bool isUnseen = false;
  contents_.push_back(contentOf(entry, isUnseen));
  areUnseen_.push_back(isUnseen);
}

RowContents::Known* RowContents::findIn(std::vector<Known>& known,
                                        const ContentIdentity& identity) {
  const auto found = std::ranges::lower_bound(known, identity, isBefore, &Known::identity);
  return found == known.end() || found->identity != identity ? nullptr : &*found;
}

ContentNumber RowContents::contentOf(const CrawledEntry& entry, bool& isUnseen) {
  const FileStatus& status = entry.status;
  if (!status.isRegularFile()) return kWithoutContent;
  const Extractor* const extractor = extractors_->forType(entry.type);
  Known* const known = findIn(extractor == nullptr ? tagged_ : known_, identityOf(status));
  if (known == nullptr) {
    isUnseen = extractor == nullptr && (!entry.isUnchanged || !hasSeenAttributes_);
    return extractor == nullptr ? kWithoutContent : kPendingContent;
  }
  // Looking into it again replaces what is known, so that is not unseen.
  known->isSeen = true;
  const ContentVersion version = versionOf(status);
  const bool isCurrent = extractor == nullptr ||
                         (known->extractor == extractor && known->version.hasSameBytesAs(version));
  if (!isCurrent) return kPendingContent;
  isUnseen = known->version.attributesChanged != version.attributesChanged;
  return known->number;
}

std::vector<ContentNumber> RowContents::contentsOf(std::span<const std::uint32_t> rows) const {
  std::vector<ContentNumber> contents;
  contents.reserve(rows.size());
  for (const std::uint32_t row : rows) contents.push_back(contents_[row]);
  return contents;
}

std::vector<std::uint32_t> RowContents::withUnseenAttributes(
    std::span<const std::uint32_t> rows) const {
  std::vector<std::uint32_t> places;
  for (std::uint32_t place = 0; place < rows.size(); ++place) {
    if (areUnseen_[rows[place]]) places.push_back(place);
  }
  return places;
}

std::vector<ContentNumber> RowContents::unseen() const {
  std::vector<ContentNumber> numbers;
  for (const auto* list : {&known_, &tagged_}) {
    for (const Known& known : *list) {
      if (!known.isSeen && devices_.contains(known.identity.device)) {
        numbers.push_back(known.number);
      }
    }
  }
  return numbers;
}

}  // namespace vt
