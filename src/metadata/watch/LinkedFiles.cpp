#include "metadata/watch/LinkedFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>

#include "metadata/crawl/FolderOpener.h"
#include "metadata/live/FolderReader.h"

namespace vt {
namespace {

bool hasOtherNames(int folder, const char* path) {
  struct stat status{};
  return ::fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0 &&
         !S_ISDIR(status.st_mode) && status.st_nlink > 1;
}

}  // namespace

bool haveOtherNames(const FileChanges& changes) {
  FolderOpener opener;
  FolderReader reader;
  const auto holdsLinked = [&](const std::string& path) {
    const Descriptor folder = opener.open(path);
    bool isFound = false;
    if (folder.isOpen()) {
      reader.list(folder.get(), [&](const char* name, EntryKind) {
        isFound = isFound || hasOtherNames(folder.get(), name);
      });
    }
    return isFound;
  };
  return std::ranges::any_of(
             changes.entries,
             [](const std::string& path) { return hasOtherNames(AT_FDCWD, path.c_str()); }) ||
         std::ranges::any_of(changes.folders, holdsLinked);
}

}  // namespace vt
