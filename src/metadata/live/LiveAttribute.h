#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

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

/// Whether the file's status must be asked to tell the attribute. What needs none is told from
/// the listing of the folder.
bool needsStatus(LiveAttribute attribute);

}  // namespace vt
