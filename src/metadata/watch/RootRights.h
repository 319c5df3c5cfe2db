#pragma once

#include <string>
#include <vector>

namespace vt {

/// What decides, above the files that are watched, who may reach them and whether they are there:
/// of each folder, and of those above it, which file it is, its owner, mode and access control
/// list. In bytes that are of use only to be compared. No watch tells when that changes.
std::string rootRights(const std::vector<std::string>& folders);

}  // namespace vt
