#include "metadata/indexing/ContentIndexer.h"

#include <sys/stat.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "metadata/extract/ExtendedAttributes.h"
#include "metadata/indexing/RowContents.h"
#include "metadata/live/LiveFile.h"
#include "metadata/live/OpenForReading.h"
#include "metadata/store/FoldersAlong.h"

namespace vt {
namespace {

// Each commit writes 4 bytes for every row of the segment anew, so they are not too near; yet what
// was found is searched some seconds later.
constexpr std::chrono::seconds kBetweenCommits{3};
constexpr std::chrono::milliseconds kBetweenReports{100};
// So many that those who look into files always have a next one.
constexpr std::size_t kMostLooks = 64;

bool hasSeveralNames(int file) {
  struct stat status{};
  return ::fstat(file, &status) == 0 && status.st_nlink > 1;
}

}  // namespace

ContentIndexer::ContentIndexer(CatalogueWriter& catalogue, const Extractors& extractors,
                               const ContentTypes& types, const SegmentIdentity& segment,
                               const SegmentColumns& columns, std::vector<ContentNumber>& contents)
    : catalogue_(catalogue),
      extractors_(extractors),
      segment_(segment),
      columns_(columns),
      contents_(contents),
      origins_(columns) {
  for (const std::string_view identifier : columns.typeIdentifiers) {
    types_.push_back(types.find(identifier));
  }
}

void ContentIndexer::queuePendingRows() {
  for (std::uint32_t row = 0; row < contents_.size(); ++row) {
    if (contents_[row] != kPendingContent) continue;
    const Extractor* const extractor = extractorOf(row);
    (extractor != nullptr && extractor->isOtherProcess() ? elsewhere_ : here_).rows.push_back(row);
  }
  // Stable: the newest first in each folder.
  std::ranges::stable_sort(here_.rows, {},
                           [&](std::uint32_t row) { return columns_.folderOf(row); });
  std::ranges::stable_sort(elsewhere_.rows, {}, [&](std::uint32_t row) {
    return std::pair(origins_.groupOf(row), columns_.folderOf(row));
  });
}

Extractor* ContentIndexer::extractorOf(std::uint32_t row) const {
  const std::optional<ContentTypeId> type = types_[columns_.typeOf(row)];
  return type ? extractors_.forType(*type) : nullptr;
}

StoreFailure ContentIndexer::run(Progress progress) {
  queuePendingRows();
  counts_.expected = here_.rows.size() + elsewhere_.rows.size();
  progress_ = &progress;
  committed_ = Clock::now();
  reported_ = committed_ - kBetweenReports;
  if (StoreFailure failure = work()) return failure;
  // Those that were given up.
  next_.reset();
  looks_.clear();
  return commit();
}

StoreFailure ContentIndexer::work() {
  for (;;) {
    report();
    if (isEnded_) return std::nullopt;
    if (StoreFailure failure = commitWhenDue()) return failure;
    while (!next_ && !elsewhere_.isEmpty()) next_ = openNext(elsewhere_);
    if (next_ && looks_.size() < kMostLooks) {
      const Result<bool, StoreError> hasBegun = begin(*next_);
      if (!hasBegun) return hasBegun.error();
      if (*hasBegun) {
        next_.reset();
        continue;
      }
    }
    if (!looks_.empty() && looks_.front().found->isDone(std::chrono::milliseconds(0))) {
      if (StoreFailure failure = finishFirst(std::chrono::milliseconds(0))) return failure;
    } else if (!here_.isEmpty()) {
      std::optional<Look> look = openNext(here_);
      if (!look) continue;
      const Result<bool, StoreError> hasBegun = begin(*look);
      if (!hasBegun) return hasBegun.error();
    } else if (!looks_.empty()) {
      if (StoreFailure failure = finishFirst(kBetweenReports)) return failure;
    } else if (!next_) {
      return std::nullopt;
    }
  }
}

void ContentIndexer::report() {
  const Clock::time_point now = Clock::now();
  if (isEnded_ || now - reported_ < kBetweenReports) return;
  reported_ = now;
  isEnded_ = !(*progress_)(counts_);
}

StoreFailure ContentIndexer::commitWhenDue() {
  if (Clock::now() - committed_ < kBetweenCommits) return std::nullopt;
  StoreFailure failure = commit();
  committed_ = Clock::now();
  return failure;
}

std::optional<ContentIndexer::Look> ContentIndexer::openNext(Queue& queue) {
  Look look;
  look.row = queue.rows[queue.next++];
  const std::uint32_t in = columns_.folderOf(look.row);
  if (in != queue.folder) {
    queue.folder = in;
    queue.folderPath = folderPathOf(columns_, in);
    queue.open = opener_.find(queue.folderPath);
  }
  const std::string name(columns_.name(look.row));
  // Before opening, since opening alone can wake whatever is behind a device or a pipe.
  const std::optional<FileStatus> named =
      queue.open.isOpen() ? statusOf(queue.open.get(), name.c_str()) : std::nullopt;
  if (named && named->isRegularFile()) {
    look.file = openForReading(queue.open.get(), name.c_str(), 0);
  }
  const std::optional<FileStatus> opened =
      look.file.isOpen() ? statusOf(look.file.get()) : std::optional<FileStatus>();
  if (!opened || !opened->isRegularFile()) {
    // The next crawl tells what has become of it.
    contents_[look.row] = kWithoutContent;
    ++counts_.vanished;
    ++counts_.done;
    return std::nullopt;
  }
  look.origin = origins_.originOf(look.row, *opened);
  // By another name others may come to it, and to what is found in it.
  if (look.origin != kOwnOrigin && hasSeveralNames(look.file.get())) look.origin = kOwnOrigin;
  look.record.identity = {opened->device, opened->inode};
  look.record.version = versionOf(*opened);
  look.record.path = joinPath(queue.folderPath, name);
  return look;
}

Result<bool, StoreError> ContentIndexer::begin(Look& look) {
  const bool isUnderWay = std::ranges::any_of(
      looks_, [&](const Look& each) { return each.record.identity == look.record.identity; });
  if (isUnderWay) {
    while (!looks_.empty() && !isEnded_) {
      if (StoreFailure failure = finishFirst(kBetweenReports)) return *std::move(failure);
      report();
    }
    if (isEnded_) return false;
  }
  if (const auto known = linked_.find(look.record.identity); known != linked_.end()) {
    contents_[look.row] = known->second;
    ++counts_.done;
    return true;
  }
  Extractor* const extractor = extractorOf(look.row);
  if (extractor == nullptr) return true;  // never so: it is pending, since one takes it
  look.record.extractor = extractor->name();
  look.record.extractorVersion = extractor->version();
  look.found = extractor->begin(look.file.get(), *types_[columns_.typeOf(look.row)], look.origin);
  if (!look.found) return false;
  if (extractor->isOtherProcess()) {
    looks_.push_back(std::move(look));
  } else if (StoreFailure failure = keep(std::move(look))) {
    return *std::move(failure);
  }
  return true;
}

StoreFailure ContentIndexer::finishFirst(std::chrono::milliseconds patience) {
  if (!looks_.front().found->isDone(patience)) return std::nullopt;
  Look look = std::move(looks_.front());
  looks_.pop_front();
  return keep(std::move(look));
}

StoreFailure ContentIndexer::keep(Look look) {
  Result<Extraction, ExtractionFailure> found = look.found->finish();
  if (!found) {
    look.record.failure = found.error();
    ++counts_.failures;
  }
  Extraction kept = found ? std::move(found).value() : Extraction();
  kept.attributes.merge(extendedAttributesOf(look.file.get()));
  const ContentIdentity identity = look.record.identity;
  const Result<ContentNumber, StoreError> number = catalogue_.add(std::move(look.record), kept);
  if (!number) return number.error();
  contents_[look.row] = *number;
  ++counts_.done;
  if (hasSeveralNames(look.file.get())) linked_.emplace(identity, *number);
  return std::nullopt;
}

StoreFailure ContentIndexer::commit() {
  if (StoreFailure failure = catalogue_.setRows(segment_, contents_)) return failure;
  return catalogue_.commit();
}

}  // namespace vt
