#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace vt {

/// Whether `path` is `folder` or lies below it; both absolute and canonical.
bool isInFolder(std::string_view path, std::string_view folder);
/// Whether `path` is one of the folders or lies below one, which takes as long as it has names.
bool isInAnyFolder(std::string_view path, const std::unordered_set<std::string_view>& folders);

/// The folder that `path`, absolute and canonical, lies in; "/" lies in itself.
std::string_view folderAbove(std::string_view path);

/// The folders to walk so that everything below each of `paths` is walked once: sorted, without
/// repeated ones and those that lie in another. `paths` are absolute and canonical.
std::vector<std::string> outermostRoots(std::vector<std::string> paths);

}  // namespace vt
