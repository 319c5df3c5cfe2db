#pragma once

#include <string_view>

namespace vt {

// Places of the system that more than one part of the library knows, without the root prefix.

/// Holds the process id of the running server in decimal digits; left behind at its end.
inline constexpr std::string_view kProcessIdFile = "/tmp/vistaro.pid";

/// The tool that makes thumbnails: "-t [-i] FILE -s SIZE -o FOLDER" writes FOLDER/NAME.png, where
/// NAME is the whole name of the file.
inline constexpr std::string_view kThumbnailTool = "/usr/bin/qlmanage";

/// The bundle whose version is the installed one.
inline constexpr std::string_view kPreferencePaneBundle =
    "/Library/PreferencePanes/Vistaro.prefPane";

/// The bundle that knows the attributes of files.
inline constexpr std::string_view kMetadataBundle =
    "/System/Library/Frameworks/CoreServices.framework/Frameworks/Metadata.framework";
/// Its table that holds, under an attribute's name with kShortNameSuffix, the attribute's short
/// names, separated by commas.
inline constexpr std::string_view kSchemaTable = "schema";
inline constexpr std::string_view kShortNameSuffix = ".ShortName";

}  // namespace vt
