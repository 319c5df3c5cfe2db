#include "metadata/live/LiveFile.h"

#include <cassert>

#include "foundation/Array.h"

namespace vt {
namespace {

// Assigns rather than constructs: a search fills the same value for every file that it meets.
std::string& textIn(Value& value) {
  if (value.get<std::string>() == nullptr) value = std::string_view{};
  return *value.get<std::string>();
}

}  // namespace

ContentTypeId typeOfEntry(const ContentTypes& types, std::string_view name, EntryKind kind) {
  switch (kind) {
    case EntryKind::kFolder:
      return types.typeOfFolder(name);
    case EntryKind::kLink:
      return types.typeOfLink();
    case EntryKind::kSpecial:
      return types.typeOfSpecialFile();
    case EntryKind::kFile:
    case EntryKind::kUnknown:
      break;
  }
  return types.typeOfFile(name);
}

EntryKind entryKindOf(const FileStatus& status) {
  if (status.isFolder()) return EntryKind::kFolder;
  if (status.isRegularFile()) return EntryKind::kFile;
  return status.isLink() ? EntryKind::kLink : EntryKind::kSpecial;
}

std::string joinPath(std::string_view folderPath, std::string_view name) {
  std::string path;
  path.reserve(folderPath.size() + 1 + name.size());
  path += folderPath;
  if (!path.ends_with('/')) path += '/';
  path += name;
  return path;
}

bool tellAttribute(LiveAttribute attribute, const LiveFile& file, const TypeTables& tables,
                   Value& value) {
  assert(file.status != nullptr || !needsStatus(attribute));
  switch (attribute) {
    case LiveAttribute::kPath:
      textIn(value) = joinPath(file.folderPath, file.name);
      return true;
    case LiveAttribute::kName:
      textIn(value) = file.name;
      return true;
    case LiveAttribute::kIsInvisible:
      value = file.name.starts_with('.');
      return true;
    case LiveAttribute::kContentType:
      textIn(value) = tables.types[file.type].identifier;
      return true;
    case LiveAttribute::kContentTypeTree:
      value = tables.types.treeIdentifiers(file.type);
      return true;
    case LiveAttribute::kKindDescription:
      if (tables.types[file.type].description.empty()) return false;
      textIn(value) = tables.types[file.type].description;
      return true;
    case LiveAttribute::kGroupNumber: {
      const std::optional<std::int64_t> number = tables.groups.numberOf(file.type);
      if (number) value = *number;
      return number.has_value();
    }
    case LiveAttribute::kModificationDate:
      value = file.status->modified;
      return true;
    case LiveAttribute::kCreationDate:
      if (file.status->created) value = *file.status->created;
      return file.status->created.has_value();
    case LiveAttribute::kAttributeChangeDate:
      value = file.status->attributesChanged;
      return true;
    case LiveAttribute::kLastUsedDate:
      value = file.status->accessed;
      return true;
    case LiveAttribute::kSize:
      value = file.status->sizeInBytes;
      return true;
    case LiveAttribute::kPhysicalSize:
      value = file.status->allocatedBytes;
      return true;
    case LiveAttribute::kOwnerUser:
      value = file.status->ownership.uid;
      return true;
    case LiveAttribute::kOwnerGroup:
      value = file.status->ownership.gid;
      return true;
    case LiveAttribute::kEntryCount:
      return false;
  }
  return false;
}

}  // namespace vt
