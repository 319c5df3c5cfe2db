#pragma once

#include "metadata/update/FileChanges.h"

namespace vt {

/// Whether one of the entries, or of those in the folders, is a file that has other names as well:
/// these have changed too, and no watch tells which they are. Trees are not looked at.
bool haveOtherNames(const FileChanges& changes);

}  // namespace vt
