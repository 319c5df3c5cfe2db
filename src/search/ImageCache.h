#pragma once

#include <string>

namespace vt {

/// The name of the thumbnail of the file at `path` (bytes).
std::string thumbnailFileName(const std::string& path, bool smallVersion);

/// Makes the settings' cache folder, and the folder of thumbnails in it, when they are missing:
/// closed to all but the owner. False when one of them is still not there.
bool makeCacheFolders();

}  // namespace vt
