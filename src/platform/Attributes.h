#pragma once

#include <string_view>

namespace vt {

// Names of the metadata attributes that the library itself asks for.
inline constexpr std::string_view kMDItemPath = "kMDItemPath";
inline constexpr std::string_view kMDItemDisplayName = "kMDItemDisplayName";
inline constexpr std::string_view kMDItemContentModificationDate = "kMDItemContentModificationDate";
inline constexpr std::string_view kMDItemContentType = "kMDItemContentType";
inline constexpr std::string_view kMDItemContentTypeTree = "kMDItemContentTypeTree";
inline constexpr std::string_view kMDItemFSSize = "kMDItemFSSize";
inline constexpr std::string_view kMDItemLastUsedDate = "kMDItemLastUsedDate";

}  // namespace vt
