#include "metadata/update/OtherNames.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <bitset>
#include <memory>
#include <utility>

namespace vt {
namespace {

// More are looked at in less time by a crawl that is not waited for.
constexpr std::size_t kMostNames = 20'000;
// So many that some thousand moments leave most of them free.
constexpr std::size_t kMarks = std::size_t{1} << 17;

std::size_t markOf(std::int64_t moment) {
  return static_cast<std::uint64_t>(moment) * 0x9E3779B97F4A7C15U >> 47;
}

bool hasSeveralNames(int folder, const char* name) {
  struct stat status{};
  return ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0 &&
         !S_ISDIR(status.st_mode) && status.st_nlink > 1;
}

}  // namespace

void OtherNames::noteArrival(int folder, const char* name, const FileStatus& status) {
  if (status.isFolder() || !hasSeveralNames(folder, name)) return;
  if (!status.created) {
    missesSome_ = true;
    return;
  }
  const std::int64_t created = status.created->time_since_epoch().count();
  const auto before = done_.find(created);
  if (before != done_.end() && before->second.isOfFileWithSeveral) return;
  moments_[created].isOfFileWithSeveral = true;
}

void OtherNames::noteDeparture(std::uint32_t row) {
  const std::int64_t created = index_.createdOf(row);
  if (created != kNoDate) moments_[created].departed.push_back(row);
}

bool OtherNames::isWanted(const Moment& moment, std::uint32_t row) const {
  return moment.isOfFileWithSeveral ||
         std::ranges::any_of(moment.departed, [&](std::uint32_t departed) {
           return index_.haveSameStatus(row, departed);
         });
}

void OtherNames::forEach(FunctionRef<void(std::uint32_t folder, std::string_view name)> visit) {
  if (moments_.empty()) return;
  // Most rows are passed over at the cost of a look at a bit.
  const auto marks = std::make_unique<std::bitset<kMarks>>();
  for (const auto& [moment, noted] : moments_) marks->set(markOf(moment));
  std::vector<std::uint32_t> rows;
  index_.forEachCreated(
      [&](std::int64_t created) { return marks->test(markOf(created)); },
      [&](std::uint32_t row) {
        const auto noted = moments_.find(index_.createdOf(row));
        if (noted == moments_.end() || rows.size() > kMostNames) return;
        if (index_.ownFolderOf(row) == kNoFolder && isWanted(noted->second, row)) {
          rows.push_back(row);
        }
      });
  if (rows.size() > kMostNames) {
    missesSome_ = true;
  } else {
    for (const std::uint32_t row : rows) visit(index_.folderOf(row), index_.nameOf(row));
  }
  for (auto& [moment, noted] : moments_)
    done_[moment].isOfFileWithSeveral |= noted.isOfFileWithSeveral;
  moments_.clear();
}

}  // namespace vt
