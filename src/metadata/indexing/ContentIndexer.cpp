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
constexpr std::size_t kMostLooks = 4;

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
      contents_(contents) {
  for (const std::string_view identifier : columns.typeIdentifiers) {
    types_.push_back(types.find(identifier));
  }
}

std::vector<std::uint32_t> ContentIndexer::pendingRows() const {
  std::vector<std::uint32_t> rows;
  for (std::uint32_t row = 0; row < contents_.size(); ++row) {
    if (contents_[row] == kPendingContent) rows.push_back(row);
  }
  // Stable: the newest first in each folder.
  std::ranges::stable_sort(rows, {}, [&](std::uint32_t row) { return columns_.folderOf(row); });
  return rows;
}

StoreFailure ContentIndexer::run(Progress progress) {
  const std::vector<std::uint32_t> rows = pendingRows();
  counts_.expected = rows.size();
  progress_ = &progress;
  Clock::time_point committed = Clock::now();
  reported_ = committed - kBetweenReports;
  std::string folderPath;
  Descriptor folder;
  std::uint32_t openFolder = kNoFolder;
  for (const std::uint32_t row : rows) {
    report();
    if (isEnded_) break;
    if (Clock::now() - committed >= kBetweenCommits) {
      if (StoreFailure failure = commit()) return failure;
      committed = Clock::now();
    }
    const std::uint32_t in = columns_.folderOf(row);
    if (in != openFolder) {
      openFolder = in;
      folderPath = folderPathOf(columns_, in);
      folder = opener_.find(folderPath);
    }
    if (StoreFailure failure = lookInto(folder.get(), folderPath, row)) return failure;
  }
  if (StoreFailure failure = finishUntil(0)) return failure;
  looks_.clear();  // those that were given up
  return commit();
}

void ContentIndexer::report() {
  const Clock::time_point now = Clock::now();
  if (isEnded_ || now - reported_ < kBetweenReports) return;
  reported_ = now;
  isEnded_ = !(*progress_)(counts_);
}

StoreFailure ContentIndexer::lookInto(int folder, const std::string& folderPath,
                                      std::uint32_t row) {
  const std::string name(columns_.name(row));
  // Before opening, since opening alone can wake whatever is behind a device or a pipe.
  const std::optional<FileStatus> named =
      folder < 0 ? std::nullopt : statusOf(folder, name.c_str());
  Look look;
  look.row = row;
  if (named && named->isRegularFile()) look.file = openForReading(folder, name.c_str(), 0);
  const std::optional<FileStatus> opened =
      look.file.isOpen() ? statusOf(look.file.get()) : std::optional<FileStatus>();
  if (!opened || !opened->isRegularFile()) {
    // The next crawl tells what has become of it.
    contents_[row] = kWithoutContent;
    ++counts_.vanished;
    ++counts_.done;
    return std::nullopt;
  }
  look.record.identity = {opened->device, opened->inode};
  look.record.version = versionOf(*opened);
  look.record.path = joinPath(folderPath, name);
  return begin(std::move(look));
}

StoreFailure ContentIndexer::begin(Look look) {
  const bool isUnderWay = std::ranges::any_of(
      looks_, [&](const Look& each) { return each.record.identity == look.record.identity; });
  if (StoreFailure failure = finishUntil(isUnderWay ? 0 : kMostLooks - 1)) return failure;
  if (isEnded_) return std::nullopt;
  if (const auto known = linked_.find(look.record.identity); known != linked_.end()) {
    contents_[look.row] = known->second;
    ++counts_.done;
    return std::nullopt;
  }
  const std::optional<ContentTypeId> type = types_[columns_.typeOf(look.row)];
  Extractor* const extractor = type ? extractors_.forType(*type) : nullptr;
  if (extractor == nullptr) return std::nullopt;  // never so: it is pending, since one takes it
  look.record.extractor = extractor->name();
  look.record.extractorVersion = extractor->version();
  look.found = extractor->begin(look.file.get(), *type);
  while (!look.found && !looks_.empty()) {
    if (StoreFailure failure = finishUntil(looks_.size() - 1)) return failure;
    if (isEnded_) return std::nullopt;
    look.found = extractor->begin(look.file.get(), *type);
  }
  if (look.found) looks_.push_back(std::move(look));
  return std::nullopt;
}

StoreFailure ContentIndexer::finishUntil(std::size_t most) {
  while (looks_.size() > most) {
    while (!looks_.front().found->isDone(kBetweenReports)) {
      report();
      if (isEnded_) return std::nullopt;
    }
    Look look = std::move(looks_.front());
    looks_.pop_front();
    if (StoreFailure failure = keep(std::move(look))) return failure;
  }
  return std::nullopt;
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
