#include "metadata/update/KnownIndex.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace vt {
namespace {

std::int64_t microsecondsOf(Date date) { return date.time_since_epoch().count(); }

std::int64_t createdOf(const FileStatus& status) {
  return status.created ? microsecondsOf(*status.created) : kNoDate;
}

/// All that a row says of its inode.
FileStatus statusIn(const SegmentColumns& segment, std::size_t row) {
  FileStatus status;
  status.ownership = segment.classes[segment.classOf(row)].ownership;
  status.sizeInBytes = segment.sizes[row];
  status.allocatedBytes = segment.allocatedBytesOf(row);
  status.modified = segment.modifiedOf(row);
  status.accessed = segment.accessedOf(row);
  status.attributesChanged = segment.attributesChangedOf(row);
  status.created = segment.createdOf(row);
  return status;
}

bool isSameStatus(const FileStatus& a, const FileStatus& b) {
  return a.sizeInBytes == b.sizeInBytes && a.allocatedBytes == b.allocatedBytes &&
         a.modified == b.modified && a.accessed == b.accessed &&
         a.attributesChanged == b.attributesChanged && a.created == b.created;
}

}  // namespace

std::optional<KnownIndex> KnownIndex::of(IndexGeneration generation, const ContentTypes& types) {
  const Segment& tables = generation.delta ? *generation.delta : *generation.segment;
  std::vector<ContentTypeId> known;
  for (const std::string_view identifier : tables.columns().typeIdentifiers) {
    const std::optional<ContentTypeId> type = types.find(identifier);
    if (!type) return std::nullopt;
    known.push_back(*type);
  }
  return KnownIndex(std::move(generation), std::move(known));
}

KnownIndex::KnownIndex(IndexGeneration generation, std::vector<ContentTypeId> types)
    : generation_(std::move(generation)),
      types_(std::move(types)),
      columns_(columnsOf(generation_)),
      borrowed_(generation_),
      baseRows_(columns_.base),
      dead_(columns_.dead),
      deadCount_(columns_.deadCount) {
  for (std::uint32_t number = 0; number < columns_.base.classes.size(); ++number) {
    classes_.numberOf(columns_.base.classes[number].ownership, tables().aclPresenceOf(number),
                      tables().aclBytesOf(number));
  }
  takeFolders();
  takeNewerRows();
}

void KnownIndex::takeFolders() {
  const SegmentColumns& tables = columns_.base;
  for (std::uint32_t folder = 0; folder < tables.folderCount(); ++folder) {
    KnownFolder known;
    known.parent = tables.parents[folder];
    known.name = tables.folderNames[folder];
    known.accessClass = tables.folderAccessClasses[folder];
    known.entryCount = tables.entryCounts[folder];
    known.stamp = this->tables().stampOf(folder);
    known.seen = manifest().began;
    known.isRoot = tables.areRoots[folder] != 0;
    known.isListed = tables.areListed[folder] != 0;
    folders.add(std::move(known));
  }
  for (const std::uint32_t number : tables.foldersByRow) {
    const std::uint32_t row = tables.folderRows[number];
    if (dead_.contains(row)) continue;
    KnownFolder& folder = folders[tables.folderNumbered(number)];
    folder.row = row;
    folder.created = tables.created[row];
  }
  if (generation_.delta) {
    const auto numbers = generation_.delta->baseFolders();
    baseFolders_.assign(numbers.begin(), numbers.end());
  } else {
    baseFolders_.resize(tables.folderCount());
    std::iota(baseFolders_.begin(), baseFolders_.end(), 0U);
  }
}

void KnownIndex::takeNewerRows() {
  const SegmentColumns& delta = columns_.delta;
  for (std::uint32_t row = 0; row < delta.rowCount(); ++row) {
    Row newer;
    newer.name = delta.name(row);
    newer.status = statusIn(delta, row);
    newer.type = types_[delta.typeOf(row)];
    newer.accessClass = delta.classOf(row);
    newer.folder = delta.folderOf(row);
    newer.ownFolder = delta.ownFolderOf(row);
    addNewer(std::move(newer));
  }
}

void KnownIndex::addNewer(Row row) {
  const auto at = static_cast<std::uint32_t>(newer_.size());
  newerIn_[row.folder].push_back(at);
  if (row.ownFolder != kNoFolder) {
    KnownFolder& own = folders[row.ownFolder];
    own.row = static_cast<std::uint32_t>(baseRowCount() + at);
    own.created = createdOf(row.status);
    own.accessClass = row.accessClass;
  }
  newer_.push_back(std::move(row));
  ++liveCount_;
}

void KnownIndex::forEachIn(
    std::uint32_t folder, FunctionRef<void(std::uint32_t row, std::string_view name)> visit) const {
  if (folder < columns_.base.folderCount()) {
    for (const std::uint32_t row : baseRows_[folder]) {
      if (!dead_.contains(row)) visit(row, columns_.base.name(row));
    }
  }
  const auto newer = newerIn_.find(folder);
  if (newer == newerIn_.end()) return;
  for (const std::uint32_t at : newer->second) {
    visit(static_cast<std::uint32_t>(baseRowCount() + at), newer_[at].name);
  }
}

std::uint32_t KnownIndex::ownFolderOf(std::uint32_t row) const {
  return isOfBase(row) ? columns_.base.ownFolderOf(row) : newer_[row - baseRowCount()].ownFolder;
}

bool KnownIndex::isAsKnown(std::uint32_t row, const CrawledEntry& entry) {
  const std::uint32_t accessClass = classOf(entry);
  if (isOfBase(row)) {
    const SegmentColumns& base = columns_.base;
    return types_[base.typeOf(row)] == entry.type && base.classOf(row) == accessClass &&
           isSameStatus(statusIn(base, row), entry.status);
  }
  const Row& known = newer_[row - baseRowCount()];
  return known.type == entry.type && known.accessClass == accessClass &&
         isSameStatus(known.status, entry.status);
}

void KnownIndex::remove(std::uint32_t row) {
  ++removedCount_;
  if (isOfBase(row)) {
    dead_.add(row);
    ++deadCount_;
    --folders[columns_.base.folderOf(row)].entryCount;
    return;
  }
  const auto at = static_cast<std::uint32_t>(row - baseRowCount());
  Row& known = newer_[at];
  std::vector<std::uint32_t>& siblings = newerIn_[known.folder];
  *std::ranges::find(siblings, at) = siblings.back();
  siblings.pop_back();
  --folders[known.folder].entryCount;
  known.isLive = false;
  --liveCount_;
}

std::uint32_t KnownIndex::add(std::uint32_t folder, const CrawledEntry& entry,
                              std::uint32_t ownFolder) {
  ++addedCount_;
  Row row;
  row.name = entry.name;
  row.status = entry.status;
  row.type = entry.type;
  row.accessClass = classOf(entry);
  row.folder = folder;
  row.ownFolder = ownFolder;
  addNewer(std::move(row));
  ++folders[folder].entryCount;
  return static_cast<std::uint32_t>(baseRowCount() + newer_.size() - 1);
}

std::vector<std::uint32_t> KnownIndex::build(SegmentBuilder& built) const {
  for (std::size_t number = 0; number < classes_.size(); ++number) {
    const AccessClassTable::Class one = classes_[number];
    built.addClass(
        one.ownership, one.acl,
        {reinterpret_cast<const std::uint8_t*>(one.aclBytes.data()), one.aclBytes.size()});
  }
  for (const ContentTypeId type : types_) built.addType(type);
  // Parents first: a folder that was moved may be in one that came later.
  std::vector<std::uint32_t> numbers(folders.size(), kNoFolder);
  std::vector<std::uint32_t> steps;
  for (std::uint32_t folder = 0; folder < folders.size(); ++folder) {
    if (folders[folder].isGone) continue;
    for (std::uint32_t at = folder; at != kNoFolder && numbers[at] == kNoFolder;
         at = folders[at].parent) {
      steps.push_back(at);
    }
    for (; !steps.empty(); steps.pop_back()) {
      const KnownFolder& known = folders[steps.back()];
      const std::uint32_t parent = known.parent == kNoFolder ? kNoFolder : numbers[known.parent];
      const std::uint32_t number = built.addFolder(parent, known.name, known.accessClass);
      built.finishFolder(number, known.stamp, known.isListed);
      if (known.isRoot) built.markRoot(number);
      numbers[steps.back()] = number;
    }
  }
  std::vector<std::uint32_t> added;
  added.reserve(liveCount_);
  for (std::uint32_t at = 0; at < newer_.size(); ++at) {
    const Row& row = newer_[at];
    if (!row.isLive) continue;
    const bool isTaken = built.addRow(
        {.name = row.name,
         .status = row.status,
         .type = row.type,
         .accessClass = row.accessClass,
         .folder = numbers[row.folder],
         .ownFolder = row.ownFolder == kNoFolder ? kNoFolder : numbers[row.ownFolder]});
    if (isTaken) added.push_back(static_cast<std::uint32_t>(baseRowCount() + at));
  }
  for (std::uint32_t folder = 0; folder < folders.size(); ++folder) {
    if (numbers[folder] != kNoFolder) {
      built.setEntryCount(numbers[folder], folders[folder].entryCount);
    }
  }
  std::vector<std::uint32_t> baseFolders;
  baseFolders.reserve(baseFolders_.size());
  for (const std::uint32_t folder : baseFolders_) {
    baseFolders.push_back(folder == kNoFolder ? kNoFolder : numbers[folder]);
  }
  built.goOnFrom(borrowed_.segment->identity(), std::move(baseFolders), dead_.words());
  return added;
}

}  // namespace vt
