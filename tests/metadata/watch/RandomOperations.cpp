#include "metadata/watch/RandomOperations.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "metadata/live/Descriptor.h"

namespace vt {

std::string RandomOperations::somewhere(const std::string& root) {
  std::string path = root;
  for (std::size_t depth = below(4) + 1; depth > 0; --depth) path += "/" + name();
  return path;
}

void RandomOperations::write(const std::string& path) {
  const int flags = below(3) == 0 ? O_APPEND : O_TRUNC;
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | flags, 0640));
  const std::string text(below(100), 'x');
  if (file.isOpen() && ::write(file.get(), text.data(), text.size()) < 0) return;
}

void RandomOperations::setList(const std::string& path) {
  const acl_t list = acl_from_text("u::rwx,u:2001:r--,g::r-x,m::rwx,o::---");
  static_cast<void>(acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list));
  acl_free(list);
}

void RandomOperations::one() {
  const std::string path = somewhere();
  const std::string other = somewhere();
  std::error_code ignored;
  const timespec times[2] = {{static_cast<time_t>(below(1'000'000)), 0},
                             {static_cast<time_t>(below(1'000'000)), 0}};
  switch (below(16)) {
    case 0:
    case 1:
    case 2:
      return write(path);
    case 3:
    case 4:
      std::filesystem::create_directories(path, ignored);
      return;
    case 5:
      ::unlink(path.c_str());
      return;
    case 6:
      std::filesystem::remove_all(path, ignored);
      return;
    case 7:
    case 8:
    case 9:
    case 10:
      ::rename(path.c_str(), other.c_str());
      return;
    case 11:
      ::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
      return;
    case 12:
      ::chmod(path.c_str(), static_cast<mode_t>(0700 + below(64)));
      return;
    case 13:
      ::symlink("target", path.c_str());
      return;
    case 14:
      ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
      return;
    default:
      setList(path);
      static_cast<void>(::lchown(path.c_str(), static_cast<uid_t>(below(3)), 0));
  }
}

}  // namespace vt
