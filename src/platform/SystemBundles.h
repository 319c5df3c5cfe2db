#pragma once

#include <string_view>

namespace vt {

// Bundles of the system that the library looks into, by their paths, and what it looks for.
inline constexpr std::string_view kPreferencePaneBundle =
    "/Library/PreferencePanes/Vistaro.prefPane";
inline constexpr std::string_view kMetadataBundle =
    "/System/Library/Frameworks/CoreServices.framework/Frameworks/Metadata.framework";
/// The table of the metadata bundle that holds the attributes' short names, separated by commas,
/// under the attribute's name with kShortNameSuffix.
inline constexpr std::string_view kSchemaTable = "schema";
inline constexpr std::string_view kShortNameSuffix = ".ShortName";

}  // namespace vt
