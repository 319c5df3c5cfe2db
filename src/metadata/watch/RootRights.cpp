#include "metadata/watch/RootRights.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string_view>

#include "metadata/crawl/FolderOpener.h"
#include "metadata/crawl/IndexRoots.h"
#include "metadata/live/FileStatus.h"
#include "metadata/rights/AclReader.h"

namespace vt {
namespace {

template <class Number>
void append(std::string& bytes, Number number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void appendFolder(std::string& bytes, FolderOpener& opener, std::string_view path) {
  bytes.append(path).push_back('\0');
  const Descriptor folder = opener.find(path);
  const std::optional<FileStatus> status =
      folder.isOpen() ? statusOf(folder.get()) : std::optional<FileStatus>();
  if (!status) return;
  append(bytes, status->device);
  append(bytes, status->inode);
  append(bytes, status->ownership.uid);
  append(bytes, status->ownership.gid);
  append(bytes, status->ownership.mode);
  std::vector<std::uint8_t> list;
  append(bytes, readAclBytes(folder.get(), ".", list));
  bytes.append(list.begin(), list.end());
}

}  // namespace

std::string rootRights(const std::vector<std::string>& folders) {
  std::set<std::string_view> paths;
  for (std::string_view path : folders) {
    while (paths.insert(path).second) path = folderAbove(path);
  }
  std::string bytes;
  FolderOpener opener;
  for (const std::string_view path : paths) appendFolder(bytes, opener, path);
  return bytes;
}

}  // namespace vt
