#include "vistaro/AccessReason.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/ActingAs.h"
#include "platform/Platform.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

/// "drwxr-x---+ 2001:3001", with a plus where an access control list says more.
std::string describeRights(const std::string& path) {
  struct stat status{};
  if (lstat(path.c_str(), &status) != 0) return "is gone";
  std::string text = S_ISDIR(status.st_mode) ? "d" : S_ISLNK(status.st_mode) ? "l" : "-";
  for (int bit = 8; bit >= 0; --bit) {
    text += (status.st_mode >> bit & 1U) != 0 ? "xwr"[bit % 3] : '-';
  }
  if (lgetxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0) text += '+';
  return fmt::format("{} {}:{}", text, status.st_uid, status.st_gid);
}

}  // namespace

bool AccessReason::isAllowed(const std::string& path, int wanted) const {
  const ActingAs acting(Platform::current().identity(),
                        {user_->username(), user_->uid(), user_->gid()});
  return acting.isInForce() && faccessat(AT_FDCWD, path.c_str(), wanted, AT_EACCESS) == 0;
}

std::optional<std::string> AccessReason::refusalOnTheWayTo(const std::string& path) {
  for (std::size_t end = path.find('/', 1); end < path.size(); end = path.find('/', end + 1)) {
    const std::string folder = path.substr(0, end);
    const auto [known, isNew] = folders_.try_emplace(folder);
    if (isNew && !isAllowed(folder, X_OK)) {
      known->second =
          fmt::format("{} may not be searched ({})", printable(folder), describeRights(folder));
    }
    if (known->second) return known->second;
  }
  return std::nullopt;
}

std::string AccessReason::of(const std::string& path) {
  struct stat status{};
  if (lstat(path.c_str(), &status) != 0) return "it is gone";
  if (user_) {
    if (const auto refusal = refusalOnTheWayTo(path)) return *refusal;
    if (!S_ISLNK(status.st_mode) && !isAllowed(path, R_OK)) {
      return fmt::format("it may not be read ({})", describeRights(path));
    }
  }
  return "it may be read by now";
}

}  // namespace vt::tool
