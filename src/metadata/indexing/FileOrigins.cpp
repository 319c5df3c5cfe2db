#include "metadata/indexing/FileOrigins.h"

#include <sys/stat.h>

#include <utility>

namespace vt {
namespace {

constexpr std::uint32_t kRoot = 0;
// Of every Linux: the owner of what belongs to an account that is not known here.
constexpr std::uint32_t kNobody = 65534;

// To read and to write. To run a file is another matter, and the owner may allow himself anything.
constexpr std::uint32_t kAll = 6;
constexpr std::uint32_t kOthersPermissions = kAll << 3 | kAll;
constexpr std::uint32_t kEverybodyMayListAndSearch = 0555;

/// No group, in the place of one that may do what everybody may.
constexpr std::uint32_t kAnyGroup = 0xFFFFFFFF;

bool isRestricting(const AccessClass& folder) {
  const bool isForAll =
      (folder.ownership.mode & kEverybodyMayListAndSearch) == kEverybodyMayListAndSearch;
  return !isForAll || folder.acl.list.has_value();
}

/// The group as far as it counts.
std::uint32_t groupOf(const AccessClass& file) {
  const std::uint32_t mode = file.ownership.mode;
  const bool countsForNothing = !file.acl.list && ((mode >> 3 ^ mode) & kAll) == 0;
  return countsForNothing ? kAnyGroup : file.ownership.gid;
}

}  // namespace

FileOrigins::FileOrigins(const SegmentColumns& columns) : columns_(columns) {
  // Classes differ in owner, group, mode or list; those without a list are told apart by the rest.
  std::map<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>, std::uint32_t> withoutList;
  std::uint32_t next = kUnknown + 1;
  for (std::size_t number = 0; number < columns.classes.size(); ++number) {
    const AccessClass file = columns.classes[number];
    const FileOwnership& ownership = file.ownership;
    if (!file.acl.isKnown || ownership.uid == kRoot || ownership.uid == kNobody) {
      classes_.push_back(kUnknown);
    } else if (file.acl.list) {
      classes_.push_back(next++);
    } else {
      const std::uint32_t mode = ownership.mode & kOthersPermissions;
      const auto [known, isNew] =
          withoutList.try_emplace({ownership.uid, vt::groupOf(file), mode}, next);
      if (isNew) ++next;
      classes_.push_back(known->second);
    }
  }
  // By what leads to the parent and the class of the folder itself.
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> ways;
  std::uint32_t nextWay = kUnknown + 1;
  const std::uint32_t freeWay = nextWay++;
  ways_.reserve(columns.folderCount());
  for (std::uint32_t folder = 0; folder < columns.folderCount(); ++folder) {
    const std::uint32_t parent = columns.parents[folder];
    const std::uint32_t number = columns.classOfFolder(folder);
    const AccessClass access = columns.classes[number];
    const std::uint32_t above = parent < folder ? ways_[parent] : freeWay;
    if (above == kUnknown || !access.acl.isKnown) {
      ways_.push_back(kUnknown);
    } else if (!isRestricting(access)) {
      ways_.push_back(above);
    } else {
      const auto [known, isNew] = ways.try_emplace({above, number}, nextWay);
      if (isNew) {
        // A second folder of the class of its parent lets nobody more and nobody less through.
        ways.try_emplace({nextWay, number}, nextWay);
        ++nextWay;
      }
      ways_.push_back(known->second);
    }
  }
}

FileOrigins::Group FileOrigins::groupOf(std::uint32_t row) const {
  if (columns_.classes.empty()) return kOwnGroup;
  const std::uint32_t file = classes_[columns_.classOf(row)];
  const std::uint32_t way = ways_[columns_.folderOf(row)];
  if (file == kUnknown || way == kUnknown) return kOwnGroup;
  return Group{file} << 32 | way;
}

FileOrigin FileOrigins::originOf(std::uint32_t row, const FileStatus& status) {
  const Group group = groupOf(row);
  if (group == kOwnGroup || status.ownership != columns_.classes[columns_.classOf(row)].ownership ||
      status.attributesChanged != columns_.attributesChangedOf(row)) {
    return kOwnOrigin;
  }
  return origins_.try_emplace({group, status.device}, origins_.size() + 1).first->second;
}

}  // namespace vt
