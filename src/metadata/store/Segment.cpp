#include "metadata/store/Segment.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "metadata/store/FileWriter.h"

namespace vt {
namespace {

enum class Per : std::uint8_t { kRow, kFolder, kClass, kType, kNothing };

/// How many numbers of which size a column has.
struct ColumnShape {
  std::size_t numberBytes;
  Per per;
  std::uint8_t beyond = 0;  ///< offsets: one more than there are texts
};

ColumnShape shapeOf(ColumnId id) {
  switch (id) {
    case ColumnId::kFoldedNames:
    case ColumnId::kOtherNames:
    case ColumnId::kFolderNames:
    case ColumnId::kClassAcls:
    case ColumnId::kTypeIdentifiers:
      return {1, Per::kNothing};
    case ColumnId::kFoldedNameOffsets:
    case ColumnId::kOtherNameOffsets:
      return {4, Per::kRow, 1};
    case ColumnId::kModified:
    case ColumnId::kCreated:
    case ColumnId::kAttributesChanged:
    case ColumnId::kAccessed:
    case ColumnId::kSizes:
      return {8, Per::kRow};
    case ColumnId::kAllocatedBlocks:
    case ColumnId::kFolders:
    case ColumnId::kAccessClasses:
      return {4, Per::kRow};
    case ColumnId::kTypes:
      return {2, Per::kRow};
    case ColumnId::kOddlyAllocatedRows:
    case ColumnId::kFoldersByRow:
      return {4, Per::kNothing};
    case ColumnId::kOddAllocations:
      return {8, Per::kNothing};
    case ColumnId::kFolderNameOffsets:
      return {4, Per::kFolder, 1};
    case ColumnId::kParents:
    case ColumnId::kFolderAccessClasses:
    case ColumnId::kEntryCounts:
    case ColumnId::kFolderRows:
      return {4, Per::kFolder};
    case ColumnId::kAreRoots:
    case ColumnId::kAreListed:
      return {1, Per::kFolder};
    case ColumnId::kFolderDevices:
    case ColumnId::kFolderInodes:
    case ColumnId::kFolderModified:
    case ColumnId::kFolderAttributesChanged:
      return {8, Per::kFolder};
    case ColumnId::kClassUids:
    case ColumnId::kClassGids:
    case ColumnId::kClassModes:
      return {4, Per::kClass};
    case ColumnId::kClassAclPresences:
      return {1, Per::kClass};
    case ColumnId::kClassAclOffsets:
      return {4, Per::kClass, 1};
    case ColumnId::kTypeIdentifierOffsets:
      return {4, Per::kType, 1};
    case ColumnId::kBaseFolders:
      return {4, Per::kNothing};
    case ColumnId::kDeadRows:
      return {8, Per::kNothing};
  }
  return {1, Per::kNothing};
}

/// Whether opening reads the column whole: all but those of the rows, being few bytes next to them,
/// and what the next crawl alone asks for. Rights are judged by these, folder by folder and class
/// by class.
bool isReadAtOpen(ColumnId id) {
  return id >= ColumnId::kFolderNames &&
         (id < ColumnId::kFolderDevices || id > ColumnId::kFolderAttributesChanged);
}

}  // namespace

Result<std::shared_ptr<const Segment>, StoreError> Segment::open(int folder,
                                                                 const std::string& name,
                                                                 std::string shownPath) {
  Result<MappedFile, StoreError> file = MappedFile::open(folder, name, shownPath);
  if (!file) return file.error();
  std::shared_ptr<Segment> segment(new Segment(std::move(file).value(), std::move(shownPath)));
  if (std::optional<StoreError> error = segment->takeHead()) return *std::move(error);
  for (std::size_t at = 0; at < kColumnCount; ++at) {
    const auto id = static_cast<ColumnId>(at);
    if (isReadAtOpen(id) && !segment->isAsWritten(id)) {
      return damageError(segment->shownPath_, fmt::format("column {} is not as written", at));
    }
  }
  segment->takeColumns();
  if (!segment->takeClasses()) {
    return damageError(segment->shownPath_, "its access classes make no sense");
  }
  return std::shared_ptr<const Segment>(std::move(segment));
}

std::optional<StoreError> Segment::takeHead() {
  const std::string_view bytes = file_.bytes();
  const auto damage = [&](std::string_view how) { return damageError(shownPath_, how); };
  if (bytes.size() < sizeof head_) return damage("it ends in its head");
  std::memcpy(&head_, bytes.data(), sizeof head_);
  if (head_.magic != kSegmentMagic) return damage("it does not begin as a segment does");
  if (head_.version != kSegmentFormatVersion) {
    return StoreError{StoreError::Kind::kOtherKind,
                      shownPath_ + " is of another version of the index format"};
  }
  if (head_.checksum != checksumOf(bytes.substr(0, offsetof(SegmentHead, checksum)))) {
    return damage("its head is not as written");
  }
  if (head_.fileBytes != bytes.size()) return damage("it is not of the size that was written");
  // From here on only a wrong writer, or an evil one, is left to guard against.
  if (!placesAreSound()) return damage("its columns lie where none can");
  if (!countsAreSound()) return damage("it has rows, yet no folder, class or type");
  return std::nullopt;
}

bool Segment::placesAreSound() const {
  if (head_.columnCount != kColumnCount) return false;
  std::uint64_t end = sizeof(SegmentHead);
  for (std::size_t at = 0; at < kColumnCount; ++at) {
    const ColumnPlace& place = head_.columns[at];
    const ColumnShape shape = shapeOf(static_cast<ColumnId>(at));
    const std::uint64_t counts[] = {head_.rowCount, head_.folderCount, head_.classCount,
                                    head_.typeCount};
    if (place.offset != alignedForColumn(end)) return false;
    if (place.offset > head_.fileBytes || place.bytes > head_.fileBytes - place.offset) {
      return false;
    }
    if (place.bytes % shape.numberBytes != 0) return false;
    if (shape.per != Per::kNothing &&
        place.bytes / shape.numberBytes !=
            counts[static_cast<std::size_t>(shape.per)] + shape.beyond) {
      return false;
    }
    end = place.offset + place.bytes;
  }
  return alignedForColumn(end) == head_.fileBytes &&
         placeOf(ColumnId::kOddAllocations).bytes / 8 ==
             placeOf(ColumnId::kOddlyAllocatedRows).bytes / 4;
}

bool Segment::countsAreSound() const {
  return head_.rowCount == 0 ||
         (head_.folderCount > 0 && head_.classCount > 0 && head_.typeCount > 0);
}

bool Segment::isAsWritten(ColumnId id) const {
  return checksumOf(bytesOf(id)) == placeOf(id).checksum;
}

void Segment::takeColumns() {
  SegmentColumns& c = columns_;
  c.foldedNames = textsOf(ColumnId::kFoldedNames, ColumnId::kFoldedNameOffsets);
  c.otherNames = textsOf(ColumnId::kOtherNames, ColumnId::kOtherNameOffsets);
  c.modified = numbersOf<std::int64_t>(ColumnId::kModified);
  c.created = numbersOf<std::int64_t>(ColumnId::kCreated);
  c.attributesChanged = numbersOf<std::int64_t>(ColumnId::kAttributesChanged);
  c.accessed = numbersOf<std::int64_t>(ColumnId::kAccessed);
  c.sizes = numbersOf<std::uint64_t>(ColumnId::kSizes);
  c.allocatedBlocks = numbersOf<std::uint32_t>(ColumnId::kAllocatedBlocks);
  c.types = numbersOf<std::uint16_t>(ColumnId::kTypes);
  c.folders = numbersOf<std::uint32_t>(ColumnId::kFolders);
  c.accessClasses = numbersOf<std::uint32_t>(ColumnId::kAccessClasses);
  c.oddlyAllocatedRows = numbersOf<std::uint32_t>(ColumnId::kOddlyAllocatedRows);
  c.oddAllocations = numbersOf<std::uint64_t>(ColumnId::kOddAllocations);
  c.folderNames = textsOf(ColumnId::kFolderNames, ColumnId::kFolderNameOffsets);
  c.parents = numbersOf<std::uint32_t>(ColumnId::kParents);
  c.folderAccessClasses = numbersOf<std::uint32_t>(ColumnId::kFolderAccessClasses);
  c.entryCounts = numbersOf<std::uint32_t>(ColumnId::kEntryCounts);
  c.areRoots = numbersOf<std::uint8_t>(ColumnId::kAreRoots);
  c.areListed = numbersOf<std::uint8_t>(ColumnId::kAreListed);
  c.folderRows = numbersOf<std::uint32_t>(ColumnId::kFolderRows);
  c.foldersByRow = numbersOf<std::uint32_t>(ColumnId::kFoldersByRow);
  const TextColumn types = textsOf(ColumnId::kTypeIdentifiers, ColumnId::kTypeIdentifierOffsets);
  typeIdentifiers_.reserve(types.size());
  for (std::size_t type = 0; type < types.size(); ++type) typeIdentifiers_.push_back(types[type]);
  c.typeIdentifiers = typeIdentifiers_;
}

bool Segment::takeClasses() {
  const auto uids = numbersOf<std::uint32_t>(ColumnId::kClassUids);
  const auto gids = numbersOf<std::uint32_t>(ColumnId::kClassGids);
  const auto modes = numbersOf<std::uint32_t>(ColumnId::kClassModes);
  const auto presences = numbersOf<std::uint8_t>(ColumnId::kClassAclPresences);
  const auto offsets = numbersOf<std::uint32_t>(ColumnId::kClassAclOffsets);
  if (offsets.front() != 0 || offsets.back() != bytesOf(ColumnId::kClassAcls).size() ||
      !std::ranges::is_sorted(offsets)) {
    return false;
  }
  for (std::uint32_t number = 0; number < head_.classCount; ++number) {
    const std::uint8_t presence = presences[number];
    if (presence > static_cast<std::uint8_t>(AclPresence::kUnknown)) return false;
    if (presence != static_cast<std::uint8_t>(AclPresence::kPresent)) continue;
    auto list = AccessControlList::parse(aclBytesOf(number));
    lists_.listed.push_back(number);
    // A list that makes no sense was kept as it was found; who it is for is refused.
    lists_.readings.push_back(list ? AclReading{true, std::move(list).value()} : AclReading{});
  }
  columns_.classes = {uids, gids, modes, presences, lists_};
  return true;
}

FolderStamp Segment::stampOf(std::uint32_t folder) const {
  return {numbersOf<std::uint64_t>(ColumnId::kFolderDevices)[folder],
          numbersOf<std::uint64_t>(ColumnId::kFolderInodes)[folder],
          numbersOf<std::int64_t>(ColumnId::kFolderModified)[folder],
          numbersOf<std::int64_t>(ColumnId::kFolderAttributesChanged)[folder]};
}

std::span<const std::uint8_t> Segment::aclBytesOf(std::uint32_t accessClass) const {
  const auto offsets = numbersOf<std::uint32_t>(ColumnId::kClassAclOffsets);
  const auto bytes = numbersOf<std::uint8_t>(ColumnId::kClassAcls);
  return bytes.subspan(offsets[accessClass], offsets[accessClass + 1] - offsets[accessClass]);
}

}  // namespace vt
