#include "metadata/store/SegmentBuilder.h"

#include <limits>
#include <utility>

#include "metadata/store/SegmentContents.h"

namespace vt {
namespace {

constexpr std::uint16_t kNoNumber = std::numeric_limits<std::uint16_t>::max();

std::int64_t microsecondsOf(Date date) { return date.time_since_epoch().count(); }

std::uint32_t blocksOf(std::uint64_t bytes) {
  const std::uint64_t blocks = bytes / kAllocationBlockBytes;
  const bool fits = bytes % kAllocationBlockBytes == 0 && blocks < kNotInBlocks;
  return fits ? static_cast<std::uint32_t>(blocks) : kNotInBlocks;
}

bool canBeAName(std::string_view name) {
  return name.size() <= NameArena::kLongestName && name.find('/') == name.npos &&
         name.find('\0') == name.npos;
}

}  // namespace

SegmentBuilder::SegmentBuilder(const ContentTypes& types, Limits limits)
    : types_(types), limits_(limits), numberOfType_(types.size(), kNoNumber) {}

std::uint32_t SegmentBuilder::addClass(const FileOwnership& ownership, AclPresence acl,
                                       std::span<const std::uint8_t> aclBytes) {
  return classes_.numberOf(ownership, acl, aclBytes);
}

std::uint32_t SegmentBuilder::addFolder(std::uint32_t parent, std::string_view name,
                                        std::uint32_t accessClass) {
  if (folders_.size() >= limits_.folders || !names_.hasRoom()) isFull_ = true;
  // Even beyond the limit a folder gets a number: what is added below has a folder to name.
  Folder& folder = folders_.emplace_back();
  folder.parent = parent;
  if (!isFull_ && canBeAName(name)) folder.name = names_.add(name);
  folder.accessClass = accessClass;
  return static_cast<std::uint32_t>(folders_.size() - 1);
}

void SegmentBuilder::finishFolder(std::uint32_t folder, const FolderStamp& stamp, bool isListed) {
  folders_[folder].stamp = stamp;
  folders_[folder].isListed = isListed;
}

bool SegmentBuilder::addRow(const SegmentEntry& entry) {
  if (entry.name.empty() || !canBeAName(entry.name)) return false;
  RowTable& rows = *rows_;
  if (rows.count >= limits_.rows || !names_.hasRoom()) isFull_ = true;
  if (isFull_) return false;
  const FileStatus& status = entry.status;
  const NameArena::Place name = names_.add(entry.name);
  const std::uint32_t blocks = blocksOf(status.allocatedBytes);
  if (blocks == kNotInBlocks) rows.oddAllocations.emplace_back(rows.count, status.allocatedBytes);
  if (entry.ownFolder != kNoFolder) rows.ownFolders.emplace_back(rows.count, entry.ownFolder);
  rows.modified.add(microsecondsOf(status.modified));
  rows.created.add(status.created ? microsecondsOf(*status.created) : kNoDate);
  rows.attributesChanged.add(microsecondsOf(status.attributesChanged));
  rows.accessed.add(microsecondsOf(status.accessed));
  rows.sizes.add(status.sizeInBytes);
  rows.allocatedBlocks.add(blocks);
  rows.types.add(numberOfType(entry.type));
  rows.folders.add(entry.folder);
  rows.accessClasses.add(entry.accessClass);
  rows.nameStarts.add(name.start);
  rows.nameLengths.add(static_cast<std::uint16_t>(name.length));
  ++rows.count;
  ++folders_[entry.folder].entryCount;
  return true;
}

void SegmentBuilder::goOnFrom(const SegmentIdentity& base, std::vector<std::uint32_t> baseFolders,
                              std::span<const std::uint64_t> deadRows) {
  base_ = base;
  baseFolders_ = std::move(baseFolders);
  deadRows_.assign(deadRows.begin(), deadRows.end());
}

std::uint16_t SegmentBuilder::numberOfType(ContentTypeId type) {
  std::uint16_t& number = numberOfType_[type];
  if (number == kNoNumber) {
    number = static_cast<std::uint16_t>(usedTypes_.size());
    usedTypes_.push_back(type);
  }
  return number;
}

Result<SegmentIdentity, StoreError> SegmentBuilder::write(FileWriter& file,
                                                          std::uint64_t generation,
                                                          std::vector<std::uint32_t>* order) const {
  if (!isFull_) {
    SegmentContents contents(*this);
    auto written = contents.write(file, generation, limits_.textBytes);
    if (order != nullptr) *order = contents.takeOrder();
    return written;
  }
  file.fail({StoreError::Kind::kTooLarge, "more files than one index can hold"});
  return *file.error();
}

}  // namespace vt
