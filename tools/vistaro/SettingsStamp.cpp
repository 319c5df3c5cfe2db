#include "vistaro/SettingsStamp.h"

#include <sys/stat.h>

#include <utility>

namespace vt::tool {

bool SettingsStamp::hasChanged() {
  Stamp now;
  struct stat status{};
  if (path_ && ::stat(path_->c_str(), &status) == 0) {
    now = {status.st_dev, status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec,
           status.st_size};
  }
  return std::exchange(stamp_, now) != now;
}

}  // namespace vt::tool
