#pragma once

#include <optional>
#include <string>

namespace vt {

class VTUser;

/// Opens the file at `path`, which is bytes and absolute, with the rights of `user` as the kernel
/// sees them at this moment (see ItemAccess; nullptr: those of the process). The descriptor is the
/// caller's to close. None when it is missing, no regular file, a link, or not the user's to read.
std::optional<int> openItemContent(const VTUser* user, const std::string& path);

}  // namespace vt
