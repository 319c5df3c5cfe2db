#include "metadata/indexing/ContentIndexer.h"

#include <sys/stat.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "metadata/indexing/RowContents.h"
#include "metadata/live/LiveFile.h"
#include "metadata/live/OpenForReading.h"

namespace vt {
namespace {

// Each commit writes 4 bytes for every row of the segment anew, so they are not too near; yet what
// was found is searched some seconds later.
constexpr std::chrono::seconds kBetweenCommits{3};
constexpr std::chrono::milliseconds kBetweenReports{100};

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

std::string ContentIndexer::pathOf(std::uint32_t folder) const {
  std::vector<std::uint32_t> steps;
  // A folder comes after its parent, so this ends whatever the numbers are.
  for (std::uint32_t at = folder; at != 0;) {
    steps.push_back(at);
    const std::uint32_t parent = columns_.parents[at];
    at = parent < at ? parent : 0;
  }
  std::string path;
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    path.append("/").append(columns_.folderNames[*step]);
  }
  return path.empty() ? "/" : path;
}

StoreFailure ContentIndexer::run(Progress progress) {
  const std::vector<std::uint32_t> rows = pendingRows();
  counts_.expected = rows.size();
  Clock::time_point committed = Clock::now();
  Clock::time_point reported = committed - kBetweenReports;
  std::string folderPath;
  Descriptor folder;
  std::uint32_t openFolder = kNoFolder;
  for (const std::uint32_t row : rows) {
    const Clock::time_point now = Clock::now();
    if (now - reported >= kBetweenReports) {
      reported = now;
      if (!progress(counts_)) break;
    }
    if (now - committed >= kBetweenCommits) {
      if (StoreFailure failure = commit()) return failure;
      committed = now;
    }
    const std::uint32_t in = columns_.folderOf(row);
    if (in != openFolder) {
      openFolder = in;
      folderPath = pathOf(in);
      folder = opener_.find(folderPath);
    }
    if (StoreFailure failure = lookInto(folder.get(), folderPath, row)) return failure;
    ++counts_.done;
  }
  return commit();
}

StoreFailure ContentIndexer::lookInto(int folder, const std::string& folderPath,
                                      std::uint32_t row) {
  const std::string name(columns_.name(row));
  // Before opening, since opening alone can wake whatever is behind a device or a pipe.
  const std::optional<FileStatus> named =
      folder < 0 ? std::nullopt : statusOf(folder, name.c_str());
  const Descriptor file =
      named && named->isRegularFile() ? openForReading(folder, name.c_str(), 0) : Descriptor();
  const std::optional<FileStatus> opened =
      file.isOpen() ? statusOf(file.get()) : std::optional<FileStatus>();
  if (!opened || !opened->isRegularFile()) {
    // The next crawl tells what has become of it.
    contents_[row] = kWithoutContent;
    ++counts_.vanished;
    return std::nullopt;
  }
  const ContentIdentity identity{opened->device, opened->inode};
  if (const auto known = linked_.find(identity); known != linked_.end()) {
    contents_[row] = known->second;
    return std::nullopt;
  }
  if (StoreFailure failure = extract(file.get(), *opened, joinPath(folderPath, name), row)) {
    return failure;
  }
  if (hasSeveralNames(file.get())) linked_.emplace(identity, contents_[row]);
  return std::nullopt;
}

StoreFailure ContentIndexer::extract(int file, const FileStatus& status, const std::string& path,
                                     std::uint32_t row) {
  const std::optional<ContentTypeId> type = types_[columns_.typeOf(row)];
  Extractor* const extractor = type ? extractors_.forType(*type) : nullptr;
  if (extractor == nullptr) return std::nullopt;  // never so: it is pending, since one takes it
  ContentRecord record;
  record.identity = {status.device, status.inode};
  record.version = versionOf(status);
  record.extractor = extractor->name();
  record.extractorVersion = extractor->version();
  record.path = path;
  Result<Extraction, ExtractionFailure> found = extractor->extract(file, *type);
  if (!found) {
    record.failure = found.error();
    ++counts_.failures;
  }
  const Result<ContentNumber, StoreError> number =
      catalogue_.add(std::move(record), found ? *found : Extraction());
  if (!number) return number.error();
  contents_[row] = *number;
  return std::nullopt;
}

StoreFailure ContentIndexer::commit() {
  if (StoreFailure failure = catalogue_.setRows(segment_, contents_)) return failure;
  return catalogue_.commit();
}

}  // namespace vt
