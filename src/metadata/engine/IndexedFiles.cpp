#include "metadata/engine/IndexedFiles.h"

namespace vt {
namespace {

/// Looks up what the attribute is told from and no more: each column is memory of its own, far from
/// the others.
void fillStatus(const SegmentColumns& segment, LiveAttribute attribute, std::size_t row,
                FileStatus& status) {
  switch (attribute) {
    case LiveAttribute::kModificationDate:
      status.modified = segment.modifiedOf(row);
      break;
    case LiveAttribute::kCreationDate:
      status.created = segment.createdOf(row);
      break;
    case LiveAttribute::kAttributeChangeDate:
      status.attributesChanged = segment.attributesChangedOf(row);
      break;
    case LiveAttribute::kLastUsedDate:
      status.accessed = segment.accessedOf(row);
      break;
    case LiveAttribute::kSize:
      status.sizeInBytes = segment.sizes[row];
      break;
    case LiveAttribute::kPhysicalSize:
      status.allocatedBytes = segment.allocatedBytesOf(row);
      break;
    case LiveAttribute::kOwnerUser:
    case LiveAttribute::kOwnerGroup:
      status.ownership = segment.classes[segment.classOf(row)].ownership;
      break;
    default:
      break;  // told without a status
  }
}

}  // namespace

std::string IndexedFiles::folderPath(std::size_t row) const {
  return folders_.pathOf(segment_.folderOf(row));
}

FileStatus IndexedFiles::status(std::size_t row) const {
  FileStatus status;
  status.ownership = segment_.classes[segment_.classOf(row)].ownership;
  status.sizeInBytes = segment_.sizes[row];
  status.allocatedBytes = segment_.allocatedBytesOf(row);
  status.modified = segment_.modifiedOf(row);
  status.accessed = segment_.accessedOf(row);
  status.attributesChanged = segment_.attributesChangedOf(row);
  status.created = segment_.createdOf(row);
  return status;
}

bool IndexedFiles::tell(LiveAttribute attribute, std::size_t row, Value& value) const {
  if (attribute == LiveAttribute::kEntryCount) return tellEntryCount(row, value);
  if (attribute == LiveAttribute::kPath) {
    value = folders_.pathOf(segment_.folderOf(row), segment_.name(row));
    return true;
  }
  FileStatus status;
  fillStatus(segment_, attribute, row, status);
  return tellAttribute(attribute, {{}, segment_.name(row), type(row), &status}, tables_, value);
}

bool IndexedFiles::tellEntryCount(std::size_t row, Value& value) const {
  const std::uint32_t folder = segment_.ownFolderOf(row);
  if (folder == kNoFolder || !verdicts_.mayRead(segment_.classOf(row))) return false;
  value = std::uint64_t{segment_.entryCounts[folder]};
  return true;
}

}  // namespace vt
