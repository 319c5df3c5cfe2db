#pragma once

#include <memory>
#include <optional>
#include <string>

#include "foundation/ObjectArray.h"
#include "scopes/VTSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"

namespace vt::tool {

using Folders = ObjectArray<VTSearchFolder>;

/// Where a search folder hangs in the tree of the settings.
struct FolderPlace {
  std::shared_ptr<VTSearchFolder> folder;
  std::shared_ptr<VTSearchFolderGroup> group;  ///< nullptr at the top
};

/// The first folder with this title, depth first; nothing when there is none.
std::optional<FolderPlace> findFolder(const std::shared_ptr<Folders>& top,
                                      const std::string& title);

/// The same. Throws CommandError (nothing found) when there is none.
FolderPlace placeOfFolder(const std::shared_ptr<Folders>& top, const std::string& title);

/// The first group with this title. Throws CommandError when there is none, or the title is that of
/// a single folder.
std::shared_ptr<VTSearchFolderGroup> groupCalled(const std::shared_ptr<Folders>& top,
                                                 const std::string& title);

/// Takes the folder out of the group, or the top list, that it hangs in.
void takeOut(const std::shared_ptr<Folders>& top, const FolderPlace& place);

}  // namespace vt::tool
