#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/Value.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/FolderReader.h"
#include "metadata/live/LiveAttribute.h"
#include "metadata/types/ContentTypes.h"
#include "metadata/types/ResultGroups.h"

namespace vt {

/// What is known of types, for all files of a search; both are of one table.
struct TypeTables {
  const ContentTypes& types;
  const ResultGroups& groups;
};

/// A file as attributes are told from it. Borrows everything.
struct LiveFile {
  std::string_view folderPath;  ///< "/" for what is in the root
  std::string_view name;
  ContentTypeId type;
  const FileStatus* status;  ///< may be nullptr while only attributes that need none are asked for
};

/// The type of an entry, by its name and what the listing said that it is.
ContentTypeId typeOfEntry(const ContentTypes& types, std::string_view name, EntryKind kind);
/// What a listing would say that a file with this status is.
EntryKind entryKindOf(const FileStatus& status);

/// Puts the attribute's value into `value`, whose storage is used again where it can be; false when
/// the file has none. Text is given to the byte, as names are stored. kEntryCount is not told here.
bool tellAttribute(LiveAttribute attribute, const LiveFile& file, const TypeTables& tables,
                   Value& value);

/// `folderPath` and `name` joined by one slash.
std::string joinPath(std::string_view folderPath, std::string_view name);

}  // namespace vt
