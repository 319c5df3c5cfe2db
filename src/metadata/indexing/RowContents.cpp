#include "metadata/indexing/RowContents.h"

#include <algorithm>
#include <tuple>

namespace vt {
namespace {

bool isBefore(const ContentIdentity& a, const ContentIdentity& b) {
  return std::tie(a.device, a.inode) < std::tie(b.device, b.inode);
}

}  // namespace

ContentVersion versionOf(const FileStatus& status) {
  return {status.modified.time_since_epoch().count(), status.sizeInBytes};
}

Result<RowContents, StoreError> RowContents::of(CatalogueWriter& catalogue,
                                                const Extractors& extractors) {
  RowContents contents(extractors);
  const StoreFailure failure = catalogue.forEach([&](const ContentRecord& record) {
    const bool isToBeTriedAgain = record.failure && !record.failure->isLasting();
    contents.known_.push_back(
        {.identity = record.identity,
         .version = record.version,
         .number = record.number,
         .extractor = isToBeTriedAgain
                          ? nullptr
                          : extractors.named(record.extractor, record.extractorVersion)});
  });
  if (failure) return *failure;
  std::ranges::sort(contents.known_, isBefore, &Known::identity);
  return contents;
}

void RowContents::add(const CrawledEntry& entry) {
  devices_.insert(entry.status.device);
  contents_.push_back(contentOf(entry));
}

ContentNumber RowContents::contentOf(const CrawledEntry& entry) {
  const FileStatus& status = entry.status;
  const Extractor* const extractor = extractors_->forType(entry.type);
  if (extractor == nullptr || !status.isRegularFile()) return kWithoutContent;
  const ContentIdentity identity{status.device, status.inode};
  const auto known = std::ranges::lower_bound(known_, identity, isBefore, &Known::identity);
  if (known == known_.end() || known->identity != identity) return kPendingContent;
  // Looking into it again replaces what is known, so that is not unseen.
  known->isSeen = true;
  const bool isCurrent = known->extractor == extractor && known->version == versionOf(status);
  return isCurrent ? known->number : kPendingContent;
}

std::vector<ContentNumber> RowContents::contentsOf(std::span<const std::uint32_t> rows) const {
  std::vector<ContentNumber> contents;
  contents.reserve(rows.size());
  for (const std::uint32_t row : rows) contents.push_back(contents_[row]);
  return contents;
}

std::vector<ContentNumber> RowContents::unseen() const {
  std::vector<ContentNumber> numbers;
  for (const Known& known : known_) {
    if (!known.isSeen && devices_.contains(known.identity.device)) numbers.push_back(known.number);
  }
  return numbers;
}

}  // namespace vt
