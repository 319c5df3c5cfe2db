#include "metadata/rights/AccessJudge.h"

#include <sys/stat.h>

namespace vt {
namespace {

bool holds(std::uint32_t bits, Permissions wanted) { return (bits & wanted) == wanted; }

}  // namespace

bool mayAclMatter(std::uint32_t mode) {
  if (S_ISLNK(mode) || (mode & S_IRWXG) == 0) return false;
  const std::uint32_t wanted = S_ISDIR(mode) ? kMayRead | kMaySearch : kMayRead;
  return ((mode >> 3 | mode) & wanted) != 0;
}

Permissions AccessJudge::grantedByMode(const FileOwnership& file) const {
  constexpr Permissions kAll = 7;
  if (who_.isSuperuser()) return kAll;
  const int shift = file.uid == who_.uid() ? 6 : who_.isMemberOf(file.gid) ? 3 : 0;
  return static_cast<Permissions>(file.mode >> shift & kAll);
}

std::optional<bool> AccessJudge::verdictOfModeAlone(const FileOwnership& file,
                                                    Permissions wanted) const {
  if (who_.isSuperuser()) return true;
  const std::uint32_t group = file.mode >> 3 & 7;
  const std::uint32_t others = file.mode & 7;
  if (file.uid == who_.uid()) return holds(file.mode >> 6, wanted);
  if (S_ISLNK(file.mode)) return holds(who_.isMemberOf(file.gid) ? group : others, wanted);
  if (group == 0) return !who_.isMemberOf(file.gid) && holds(others, wanted);
  if (!holds(group, wanted) && !holds(others, wanted)) return false;
  return std::nullopt;
}

bool AccessJudge::verdictWithAcl(const FileOwnership& file, Permissions wanted,
                                 const std::optional<AccessControlList>& list) const {
  if (list) return list->grants(who_, file.gid, wanted);
  return holds(who_.isMemberOf(file.gid) ? file.mode >> 3 : file.mode, wanted);
}

}  // namespace vt
