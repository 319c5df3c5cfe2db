#pragma once

#include <string>
#include <string_view>

#include "platform/linux/SambaConfiguration.h"

namespace vt {

/// The shares that users declared by themselves (`net usershare`): one file each, named like the
/// share, in the folder that the configuration names. In the order of the files' names.
///
/// The rules are Samba's own. The folder must be root's, sticky and not writable by everybody. A
/// file counts when it is regular, readable, no longer than 10,240 bytes, of version 1 or 2 and of
/// Samba's form; the path must be a folder, and where the configuration says so it must belong to
/// the owner of the file, root's files excepted. A name of the configuration is not given again.
/// What breaks a rule is left out with a note. A folder that does not exist declares nothing.
SharedFolders readUsershareFiles(const std::string& folder,
                                 const SambaConfiguration& configuration);

/// The share that a file called `fileName` holds, the path as it stands there; an error that says
/// what is wrong with it.
Result<SharedFolder, ConfigurationError> parseUsershareFile(std::string_view fileName,
                                                            std::string_view text);

}  // namespace vt
