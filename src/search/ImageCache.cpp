#include "search/ImageCache.h"

#include "platform/Files.h"
#include "platform/Platform.h"
#include "settings/VTSettings.h"
#include "util/CocoaCryptoHashing.h"

namespace vt {

std::string thumbnailFileName(const std::string& path, bool smallVersion) {
  // The bytes of the path, which need not be UTF-8.
  return md5HexHash(Data(path)) + (smallVersion ? "_small.png" : ".png");
}

bool makeCacheFolders() {
  const auto settings = VTSettings::sharedInstance();
  const Platform& platform = Platform::current();
  Files& files = platform.files();
  const std::string thumbnails = settings->thumbnailCacheDirectory();
  if (files.isDirectory(thumbnails)) return true;
  // Each succeeds only where its parent is there; those that are there already are left alone.
  for (const char* shared : {"/Library", "/Library/Caches"}) {
    files.createDirectory(platform.systemPath(shared));
  }
  files.createPrivateDirectory(settings->cacheDirectory());
  files.createPrivateDirectory(thumbnails);
  return files.isDirectory(thumbnails);
}

}  // namespace vt
