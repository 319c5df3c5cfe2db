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

std::string IndexedFiles::folderPath(std::size_t row) const { return folders_.pathOf(folder(row)); }

FileStatus IndexedFiles::status(std::size_t row) const {
  const Row at = find(row);
  const SegmentColumns& segment = at.segment;
  FileStatus status;
  status.ownership = segment.classes[segment.classOf(at.row)].ownership;
  status.sizeInBytes = segment.sizes[at.row];
  status.allocatedBytes = segment.allocatedBytesOf(at.row);
  status.modified = segment.modifiedOf(at.row);
  status.accessed = segment.accessedOf(at.row);
  status.attributesChanged = segment.attributesChangedOf(at.row);
  status.created = segment.createdOf(at.row);
  return status;
}

bool IndexedFiles::tell(LiveAttribute attribute, std::size_t row, Value& value) const {
  const Row at = find(row);
  if (attribute == LiveAttribute::kEntryCount) return tellEntryCount(at, value);
  if (attribute == LiveAttribute::kPath) {
    value = folders_.pathOf(at.segment.folderOf(at.row), at.segment.name(at.row));
    return true;
  }
  FileStatus status;
  fillStatus(at.segment, attribute, at.row, status);
  return tellAttribute(attribute, {{}, at.segment.name(at.row), typeOf(at), &status}, tables_,
                       value);
}

bool IndexedFiles::tellEntryCount(Row row, Value& value) const {
  const std::uint32_t folder = row.segment.ownFolderOf(row.row);
  if (folder == kNoFolder || !verdicts_.mayRead(row.segment.classOf(row.row))) return false;
  value = std::uint64_t{row.segment.entryCounts[folder]};
  return true;
}

}  // namespace vt
