// The preview of an item: one file for each user.

#include "directory/VTUser.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "search/ImageCache.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"

namespace vt {

std::optional<std::string> VTSearchResult::buildPreviewForItemAtIndex(std::uint64_t index) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  if (!user_) return std::nullopt;
  const std::string username = user_->username();
  // A name with a slash would lead out of the folder.
  if (username.find('/') != std::string::npos) return std::nullopt;
  Files& files = Platform::current().files();
  std::string target =
      VTSettings::sharedInstance()->cacheDirectory() + "/Preview-" + username + ".png";
  files.removeFile(target);
  if (path && makeCacheFolders()) {
    buildThumbnailForFile(*path, target, /*iconMode=*/false, kPreviewSize, kPreviewSize);
  }
  return files.exists(target) ? std::optional(std::move(target)) : std::nullopt;
}

}  // namespace vt
