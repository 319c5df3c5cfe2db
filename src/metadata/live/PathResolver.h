#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "metadata/live/Descriptor.h"
#include "metadata/live/FileStatus.h"
#include "metadata/rights/AccessJudge.h"

namespace vt {

/// A file that was found by its path.
struct ResolvedPath {
  Descriptor file;  ///< of O_PATH: it names the file and reads nothing
  FileStatus status;
  std::string canonicalPath;  ///< absolute, without links, ".", ".." and double slashes
  Descriptor folder;          ///< what it was found in; closed for "/" and what ".." led to
  std::string name;           ///< its name in that folder
  /// What to call it: the path that was asked for, unless that has steps which are no names.
  std::string shownPath;
};

/// The access control list of what was found.
AclReading readAclOf(const ResolvedPath& found);

enum class LastLink : std::uint8_t { kFollow, kKeep };

/// Finds the file at the absolute path `path` (bytes) as the kernel would for the judged account:
/// one step at a time, each folder on the way judged for search permission, links followed.
/// `lastLink` says whether a link at the very end is followed or is itself what is found.
///
/// Nothing when the path is relative, something on it is missing, is no folder or may not be
/// searched, or more than 40 links lie on it. The file itself is not judged.
std::optional<ResolvedPath> resolvePath(std::string_view path, LastLink lastLink,
                                        const AccessJudge& judge);

/// Whether the account may look names up in the open folder, whose status is given. The descriptor
/// may be one of O_PATH.
bool maySearchFolder(int folder, const FileStatus& status, const AccessJudge& judge);

}  // namespace vt
