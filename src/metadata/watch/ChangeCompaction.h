#pragma once

#include <cstddef>

#include "metadata/update/FileChanges.h"

namespace vt {

/// More folders than these in one set of changes are no longer told one by one.
inline constexpr std::size_t kMostChangedFolders = 4096;

/// The same changes in as few words: nothing twice, and nothing below a tree or in a folder that is
/// named anyhow; sorted. When they are in more than `mostFolders` folders, the one folder that
/// holds them all is a tree.
FileChanges compactedChanges(FileChanges changes, std::size_t mostFolders = kMostChangedFolders);

}  // namespace vt
