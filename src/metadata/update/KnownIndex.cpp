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

/// The types that the segment numbers; nothing when `types` lacks one.
std::optional<std::vector<ContentTypeId>> typesOf(const SegmentColumns& segment,
                                                  const ContentTypes& types) {
  std::vector<ContentTypeId> known;
  for (const std::string_view identifier : segment.typeIdentifiers) {
    const std::optional<ContentTypeId> type = types.find(identifier);
    if (!type) return std::nullopt;
    known.push_back(*type);
  }
  return known;
}

}  // namespace

std::optional<KnownIndex> KnownIndex::of(IndexGeneration generation, const ContentTypes& types) {
  const Segment& tables = generation.delta ? *generation.delta : *generation.segment;
  std::optional<std::vector<ContentTypeId>> known = typesOf(tables.columns(), types);
  if (!known) return std::nullopt;
  return KnownIndex(std::move(generation), *std::move(known));
}

KnownIndex::KnownIndex(IndexGeneration generation, std::vector<ContentTypeId> types)
    : generation_(std::move(generation)),
      types_(std::move(types)),
      segment_(generation_.segment),
      base_(segment_->columns()),
      baseRows_(base_),
      dead_(base_.rowCount()) {
  const GenerationColumns columns = columnsOf(generation_);
  const Segment& tables = generation_.delta ? *generation_.delta : *segment_;
  dead_ = columns.dead;
  deadCount_ = columns.deadCount;
  for (std::uint32_t number = 0; number < columns.base.classes.size(); ++number) {
    classes_.numberOf(columns.base.classes[number].ownership, tables.aclPresenceOf(number),
                      tables.aclBytesOf(number));
  }
  layout_.folders.resize(columns.base.folderCount());
  std::iota(layout_.folders.begin(), layout_.folders.end(), 0U);
  layout_.rows.resize(columns.delta.rowCount());
  std::iota(layout_.rows.begin(), layout_.rows.end(), static_cast<std::uint32_t>(baseRowCount()));
  takeFolders(columns);
  takeNewerRows(columns.delta);
}

void KnownIndex::takeFolders(const GenerationColumns& columns) {
  const SegmentColumns& tables = columns.base;
  const Segment& newest = generation_.delta ? *generation_.delta : *segment_;
  for (std::uint32_t folder = 0; folder < tables.folderCount(); ++folder) {
    KnownFolder known;
    known.parent = tables.parents[folder];
    known.name = tables.folderNames[folder];
    known.accessClass = tables.folderAccessClasses[folder];
    known.entryCount = tables.entryCounts[folder];
    known.stamp = newest.stampOf(folder);
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
  std::vector<std::uint32_t> baseFolders = layout_.folders;
  if (generation_.delta) {
    const auto numbers = generation_.delta->baseFolders();
    baseFolders.assign(numbers.begin(), numbers.end());
  }
  numberBaseFolders(std::move(baseFolders));
}

void KnownIndex::numberBaseFolders(std::vector<std::uint32_t> baseFolders) {
  baseFolders_ = std::move(baseFolders);
  baseNumbers_.assign(folders.size(), kNoFolder);
  for (std::uint32_t number = 0; number < baseFolders_.size(); ++number) {
    if (baseFolders_[number] != kNoFolder) baseNumbers_[baseFolders_[number]] = number;
  }
}

void KnownIndex::takeNewerRows(const SegmentColumns& delta) {
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
    own.created = vt::createdOf(row.status);
    own.accessClass = row.accessClass;
  }
  newer_.push_back(std::move(row));
  ++liveCount_;
}

void KnownIndex::forEachIn(
    std::uint32_t folder, FunctionRef<void(std::uint32_t row, std::string_view name)> visit) const {
  if (folder < baseNumbers_.size() && baseNumbers_[folder] != kNoFolder) {
    for (const std::uint32_t row : baseRows_[baseNumbers_[folder]]) {
      if (!dead_.contains(row)) visit(row, base_.name(row));
    }
  }
  const auto newer = newerIn_.find(folder);
  if (newer == newerIn_.end()) return;
  for (const std::uint32_t at : newer->second) {
    visit(static_cast<std::uint32_t>(baseRowCount() + at), newer_[at].name);
  }
}

void KnownIndex::forEachCreated(FunctionRef<bool(std::int64_t created)> isWanted,
                                FunctionRef<void(std::uint32_t row)> visit) const {
  for (std::uint32_t row = 0; row < base_.created.size(); ++row) {
    if (isWanted(base_.created[row]) && !dead_.contains(row)) visit(row);
  }
  for (std::uint32_t at = 0; at < newer_.size(); ++at) {
    if (newer_[at].isLive && isWanted(vt::createdOf(newer_[at].status))) {
      visit(static_cast<std::uint32_t>(baseRowCount() + at));
    }
  }
}

std::int64_t KnownIndex::createdOf(std::uint32_t row) const {
  return isOfBase(row) ? base_.created[row] : vt::createdOf(newer_[row - baseRowCount()].status);
}

bool KnownIndex::haveSameStatus(std::uint32_t row, std::uint32_t other) const {
  const auto statusOfAny = [this](std::uint32_t any) {
    return isOfBase(any) ? statusIn(base_, any) : newer_[any - baseRowCount()].status;
  };
  return isSameStatus(statusOfAny(row), statusOfAny(other));
}

std::uint32_t KnownIndex::ownFolderOf(std::uint32_t row) const {
  if (!isOfBase(row)) return newer_[row - baseRowCount()].ownFolder;
  const std::uint32_t number = base_.ownFolderOf(row);
  return number == kNoFolder ? kNoFolder : baseFolders_[number];
}

bool KnownIndex::isAsKnown(std::uint32_t row, const CrawledEntry& entry) {
  const std::uint32_t accessClass = classOf(entry);
  if (isOfBase(row)) {
    return types_[base_.typeOf(row)] == entry.type && base_.classOf(row) == accessClass &&
           isSameStatus(statusIn(base_, row), entry.status);
  }
  const Row& known = newer_[row - baseRowCount()];
  return known.type == entry.type && known.accessClass == accessClass &&
         isSameStatus(known.status, entry.status);
}

void KnownIndex::remove(std::uint32_t row) {
  ++removedCount_;
  removed_.push_back(row);
  if (isOfBase(row)) {
    dead_.add(row);
    ++deadCount_;
    --folders[baseFolderOf(row)].entryCount;
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

void KnownIndex::take(IndexGeneration published, Layout layout) {
  generation_ = std::move(published);
  layout_ = std::move(layout);
  removed_.clear();
  // The same bytes, mapped once.
  segment_ = generation_.segment;
  base_ = segment_->columns();
}

KnownIndex::Layout KnownIndex::build(SegmentBuilder& built) const {
  Layout layout;
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
      layout.folders.push_back(steps.back());
    }
  }
  layout.rows.reserve(liveCount_);
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
    if (isTaken) layout.rows.push_back(static_cast<std::uint32_t>(baseRowCount() + at));
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
  built.goOnFrom(segment_->identity(), std::move(baseFolders), dead_.words());
  return layout;
}

std::optional<std::vector<std::uint32_t>> KnownIndex::rebase(std::shared_ptr<const Segment> merged,
                                                             std::span<const std::uint32_t> order,
                                                             const Mark& mark,
                                                             const ContentTypes& types) {
  const SegmentColumns& columns = merged->columns();
  std::optional<std::vector<ContentTypeId>> known = typesOf(columns, types);
  if (!known || columns.rowCount() != order.size() ||
      columns.folderCount() != mark.layout.folders.size()) {
    return std::nullopt;
  }
  const auto baseRows = static_cast<std::uint32_t>(baseRowCount());
  std::vector<std::uint32_t> before(order.begin(), order.end());
  for (std::uint32_t& row : before) {
    if (row >= baseRows) row = mark.layout.rows[row - baseRows];
  }
  Bitmap dead(before.size());
  dead.addIf(0, before.size(), [&](std::size_t row) { return !isLive(before[row]); });
  numberBaseFolders(mark.layout.folders);
  renumberClasses(*merged);
  renumberNewer(columns, mark.newerCount, before);
  types_ = *std::move(known);
  dead_ = std::move(dead);
  deadCount_ = dead_.count();
  baseRows_ = RowsByFolder(columns);
  base_ = columns;
  segment_ = std::move(merged);
  layout_ = {{}, baseFolders_};
  return before;
}

/// Gives classes the numbers that the merged segment has for them, and others the next ones.
void KnownIndex::renumberClasses(const Segment& merged) {
  AccessClassTable classes;
  for (std::uint32_t number = 0; number < merged.columns().classes.size(); ++number) {
    classes.numberOf(merged.columns().classes[number].ownership, merged.aclPresenceOf(number),
                     merged.aclBytesOf(number));
  }
  const auto renumber = [&](std::uint32_t& number) {
    const AccessClassTable::Class one = classes_[number];
    number = classes.numberOf(
        one.ownership, one.acl,
        {reinterpret_cast<const std::uint8_t*>(one.aclBytes.data()), one.aclBytes.size()});
  };
  for (std::uint32_t folder = 0; folder < folders.size(); ++folder) {
    if (!folders[folder].isGone) renumber(folders[folder].accessClass);
  }
  for (Row& row : newer_) {
    if (row.isLive) renumber(row.accessClass);
  }
  classes_ = std::move(classes);
}

/// Keeps of the rows beside the base those that count and came after the first ones, which are in
/// the merged segment, and says what they were called before.
void KnownIndex::renumberNewer(const SegmentColumns& merged, std::size_t firstKept,
                               std::vector<std::uint32_t>& before) {
  const std::size_t firstNewer = baseRowCount() + firstKept;
  std::vector<Row> kept;
  std::vector<std::uint32_t> numbers(newer_.size() - firstKept, kNoRow);
  newerIn_.clear();
  for (std::size_t at = firstKept; at < newer_.size(); ++at) {
    if (!newer_[at].isLive) continue;
    const auto place = static_cast<std::uint32_t>(kept.size());
    numbers[at - firstKept] = static_cast<std::uint32_t>(merged.rowCount() + place);
    before.push_back(static_cast<std::uint32_t>(baseRowCount() + at));
    newerIn_[newer_[at].folder].push_back(place);
    kept.push_back(std::move(newer_[at]));
  }
  newer_ = std::move(kept);
  liveCount_ = newer_.size();
  for (std::uint32_t folder = 0; folder < folders.size(); ++folder) {
    KnownFolder& known = folders[folder];
    if (known.isGone || known.row == kNoRow) continue;
    known.row = known.row < firstNewer ? merged.folderRows[baseNumbers_[folder]]
                                       : numbers[known.row - firstNewer];
  }
}

}  // namespace vt
