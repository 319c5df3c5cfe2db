#include "metadata/live/LiveAttribute.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vt {
namespace {

constexpr auto kNames = std::to_array<std::pair<std::string_view, LiveAttribute>>({
    {"kMDItemPath", LiveAttribute::kPath},
    {"kMDItemFSName", LiveAttribute::kName},
    {"kMDItemDisplayName", LiveAttribute::kName},
    {"kMDItemFSInvisible", LiveAttribute::kIsInvisible},
    {"kMDItemContentType", LiveAttribute::kContentType},
    {"kMDItemContentTypeTree", LiveAttribute::kContentTypeTree},
    {"kMDItemKind", LiveAttribute::kKindDescription},
    {"_kMDItemGroupId", LiveAttribute::kGroupNumber},
    {"kMDItemFSContentChangeDate", LiveAttribute::kModificationDate},
    {"kMDItemContentModificationDate", LiveAttribute::kModificationDate},
    {"kMDItemFSCreationDate", LiveAttribute::kCreationDate},
    {"kMDItemContentCreationDate", LiveAttribute::kCreationDate},
    {"kMDItemAttributeChangeDate", LiveAttribute::kAttributeChangeDate},
    {"kMDItemLastUsedDate", LiveAttribute::kLastUsedDate},
    {"kMDItemFSSize", LiveAttribute::kSize},
    {"kMDItemLogicalSize", LiveAttribute::kSize},
    {"kMDItemPhysicalSize", LiveAttribute::kPhysicalSize},
    {"kMDItemFSOwnerUserID", LiveAttribute::kOwnerUser},
    {"kMDItemFSOwnerGroupID", LiveAttribute::kOwnerGroup},
    {"kMDItemFSNodeCount", LiveAttribute::kEntryCount},
});

}  // namespace

std::optional<LiveAttribute> liveAttributeNamed(std::string_view name) {
  const auto* const found =
      std::ranges::find(kNames, name, [](const auto& row) { return row.first; });
  if (found == kNames.end()) return std::nullopt;
  return found->second;
}

bool maySomethingInFilesReplace(std::string_view attribute) {
  return attribute == "kMDItemContentCreationDate";
}

bool needsStatus(LiveAttribute attribute) { return attribute >= LiveAttribute::kModificationDate; }

std::vector<LiveAttribute> searchableLiveAttributes(const query::AttributeSchema& schema) {
  std::vector<LiveAttribute> searchable;
  for (const query::Attribute& attribute : schema.attributes()) {
    if (!attribute.isSearchable) continue;
    const std::optional<LiveAttribute> live = liveAttributeNamed(attribute.name);
    if (live && std::ranges::find(searchable, *live) == searchable.end()) {
      searchable.push_back(*live);
    }
  }
  return searchable;
}

}  // namespace vt
