#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "metadata/query/AttributeSchema.h"

namespace vt {

/// The attributes that can be told from a file without looking into it.
enum class LiveAttribute : std::uint8_t {
  kPath,
  kName,
  kIsInvisible,
  kContentType,
  kContentTypeTree,
  kKindDescription,
  kGroupNumber,
  kModificationDate,
  kCreationDate,
  kAttributeChangeDate,
  kLastUsedDate,
  kSize,
  kPhysicalSize,
  kOwnerUser,
  kOwnerGroup,
  kEntryCount,
};

/// The attribute called `name` ("kMDItemFSSize"); several names may mean one. Nothing for a name
/// that the live file says nothing about.
std::optional<LiveAttribute> liveAttributeNamed(std::string_view name);

/// Whether a value that stands in the file itself counts before what its status says: the date at
/// which a photograph was taken, rather than that at which it was copied here.
bool maySomethingInFilesReplace(std::string_view attribute);

/// Whether the file's status must be asked to tell the attribute. What needs none is told from
/// the listing of the folder.
bool needsStatus(LiveAttribute attribute);

/// What `*` looks at: the attributes that the schema marks as searchable and a file can have, each
/// once, though two names may mean one.
std::vector<LiveAttribute> searchableLiveAttributes(const query::AttributeSchema& schema);

}  // namespace vt
