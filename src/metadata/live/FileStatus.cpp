#include "metadata/live/FileStatus.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace vt {
namespace {

constexpr std::uint64_t kBlockBytes = 512;  // what `st_blocks` counts, whatever the file system

Date dateOf(const statx_timestamp& time) {
  return dateFromTimespec({time.tv_sec, static_cast<long>(time.tv_nsec)});
}

std::optional<FileStatus> ask(int folder, const char* name, int flags) {
  struct statx from{};
  if (statx(folder, name, flags | AT_NO_AUTOMOUNT, STATX_BASIC_STATS | STATX_BTIME, &from) != 0) {
    return std::nullopt;
  }
  FileStatus status;
  status.ownership = {from.stx_uid, from.stx_gid, from.stx_mode};
  status.sizeInBytes = from.stx_size;
  status.allocatedBytes = from.stx_blocks * kBlockBytes;
  status.modified = dateOf(from.stx_mtime);
  status.accessed = dateOf(from.stx_atime);
  status.attributesChanged = dateOf(from.stx_ctime);
  if ((from.stx_mask & STATX_BTIME) != 0) status.created = dateOf(from.stx_btime);
  status.device = static_cast<std::uint64_t>(from.stx_dev_major) << 32 | from.stx_dev_minor;
  status.inode = from.stx_ino;
  return status;
}

}  // namespace

bool FileStatus::isFolder() const { return S_ISDIR(ownership.mode); }
bool FileStatus::isRegularFile() const { return S_ISREG(ownership.mode); }
bool FileStatus::isLink() const { return S_ISLNK(ownership.mode); }

std::optional<FileStatus> statusOf(int folder, const char* name) {
  return ask(folder, name, AT_SYMLINK_NOFOLLOW);
}

std::optional<FileStatus> statusOf(int descriptor) { return ask(descriptor, "", AT_EMPTY_PATH); }

}  // namespace vt
