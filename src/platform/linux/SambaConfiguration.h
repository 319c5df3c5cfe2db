#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "foundation/Result.h"
#include "platform/linux/SharedFolders.h"

namespace vt {

class Tasks;

/// What Samba's configuration says of shares, and of where users declare more.
struct SambaConfiguration {
  SharedFolders shares;
  /// The names of all sections, as sambaName() gives them: users cannot take them for theirs.
  std::set<std::string> sectionNames;
  std::string usershareFolder;     ///< "" when users declare none
  std::size_t usershareLimit = 0;  ///< how many shares users may declare; 0: none
  bool userSharesOwnOnly = true;   ///< whether a user may share only a folder that is theirs
};

/// Why there is no configuration, as one line.
struct ConfigurationError {
  std::string text;
};

/// A share's name as Samba compares it: without regard to case.
std::string sambaName(std::string_view name);

/// What the output of `testparm -s -v` says. Never fails: lines of no known form are passed over.
///
/// No share, and no note either, are [homes], [printers], print$, IPC$ and what is printable; left
/// out with a note are shares that are not available or whose path holds a variable ("%U"), so that
/// it is no one folder.
SambaConfiguration parseSambaConfiguration(std::string_view testparmOutput);

/// The configuration in `file` as Samba itself reads it, by its program `testparm`: includes,
/// copies and the registry resolved. An error when testparm is not installed, fails or finds the
/// file broken. Takes about 20 ms.
Result<SambaConfiguration, ConfigurationError> readSambaConfiguration(Tasks& tasks,
                                                                      const std::string& file);

}  // namespace vt
