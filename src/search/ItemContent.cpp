#include "search/ItemContent.h"

#include "directory/VTUser.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "search/ItemAccess.h"

namespace vt {

std::optional<int> openItemContent(const VTUser* user, const std::string& path) {
  const ItemAccess access(user, path);
  if (!access.isGranted()) return std::nullopt;
  const Result<int, FileError> file = Platform::current().files().openContent(path);
  return file ? std::optional(*file) : std::nullopt;
}

}  // namespace vt
