#include "metadata/crawl/FolderScanner.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>

#include "metadata/live/LiveFile.h"

namespace vt {
namespace {

std::int64_t nanoseconds(const statx_timestamp& time) {
  return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

std::optional<FolderStamp> stampOf(int folder) {
  struct statx from{};
  if (statx(folder, "", AT_EMPTY_PATH, STATX_INO | STATX_MTIME | STATX_CTIME, &from) != 0) {
    return std::nullopt;
  }
  return FolderStamp{static_cast<std::uint64_t>(from.stx_dev_major) << 32 | from.stx_dev_minor,
                     from.stx_ino, nanoseconds(from.stx_mtime), nanoseconds(from.stx_ctime)};
}

bool isBefore(std::int64_t nanosecondsSince1970, Date date) {
  return nanosecondsSince1970 / 1000 < date.time_since_epoch().count();
}

}  // namespace

FolderScanner::Outcome FolderScanner::scan(const PendingFolder& pending, Take take) {
  Outcome outcome;
  if (pending.isMountPoint && !mayEnter(pending)) return outcome;
  const Descriptor folder = opener_.open(pending.path);
  if (!folder.isOpen()) return outcome;
  // Asked before the listing: what changes during it makes the next crawl list the folder again.
  const std::optional<FolderStamp> stamp = stampOf(folder.get());
  if (!stamp || stamp->device != pending.device || stamp->inode != pending.inode) return outcome;
  outcome.stamp = *stamp;

  batch_.clear();
  const CrawledFolderId before = memory_ != nullptr ? pending.before : kNoCrawledFolder;
  const bool isUnchanged = before != kNoCrawledFolder && memory_->stampOf(before) == stamp &&
                           isBefore(stamp->modified, memory_->seenUntil()) &&
                           isBefore(stamp->attributesChanged, memory_->seenUntil());
  const bool sawAll =
      isUnchanged ? ask(folder.get(), before, take) : list(folder.get(), before, take);
  outcome.isComplete = flush(take) && sawAll;
  return outcome;
}

bool FolderScanner::look(int folder, const std::string& name, Take take) {
  batch_.clear();
  return add(folder, name.c_str(), nullptr) && flush(take);
}

bool FolderScanner::mayEnter(const PendingFolder& pending) {
  const Descriptor folder = opener_.find(pending.path);
  return folder.isOpen() && fileSystems_.holdsFiles(pending.device, folder.get());
}

bool FolderScanner::list(int folder, CrawledFolderId before, Take take) {
  remembered_.clear();
  if (before != kNoCrawledFolder) {
    memory_->entriesOf(
        before, [this](const RememberedEntry& entry) { remembered_.emplace(entry.name, entry); });
  }
  bool goesOn = true;
  const bool isRead = reader_.list(folder, [&](const char* name, EntryKind) {
    if (!goesOn) return;
    const auto known = remembered_.find(name);
    add(folder, name, known == remembered_.end() ? nullptr : &known->second);
    if (batch_.isFull()) goesOn = flush(take);
  });
  return isRead && goesOn;
}

bool FolderScanner::ask(int folder, CrawledFolderId before, Take take) {
  bool goesOn = true;
  bool sawAll = true;
  memory_->entriesOf(before, [&](const RememberedEntry& entry) {
    if (!goesOn) return;
    name_ = entry.name;  // the system wants a NUL behind it
    sawAll = add(folder, name_.c_str(), &entry) && sawAll;
    if (batch_.isFull()) goesOn = flush(take);
  });
  return sawAll && goesOn;
}

bool FolderScanner::add(int folder, const char* name, const RememberedEntry* remembered) {
  const std::optional<FileStatus> status = statusOf(folder, name);
  if (!status) return false;
  CrawledEntry entry;
  entry.name = name;
  entry.status = *status;
  entry.type = typeOfEntry(types_, entry.name, entryKindOf(*status));
  entry.acl = aclOf(folder, name, *status, remembered);
  entry.aclBytes = aclBytes_;
  if (remembered != nullptr) entry.before = remembered->folder;
  entry.isUnchanged = isUnchanged(*status, remembered);
  batch_.add(entry);
  return true;
}

bool FolderScanner::isUnchanged(const FileStatus& status, const RememberedEntry* remembered) const {
  return remembered != nullptr && remembered->attributesChanged == status.attributesChanged &&
         status.attributesChanged < memory_->seenUntil();
}

AclPresence FolderScanner::aclOf(int folder, const char* name, const FileStatus& status,
                                 const RememberedEntry* remembered) {
  aclBytes_.clear();
  if (!mayAclMatter(status.ownership.mode)) return AclPresence::kNone;
  if (devicesWithoutAcls_.contains(status.device)) return AclPresence::kNotKept;
  if (isUnchanged(status, remembered) && remembered->acl != AclPresence::kUnknown &&
      remembered->ownership == status.ownership) {
    aclBytes_.assign(remembered->aclBytes.begin(), remembered->aclBytes.end());
    return remembered->acl;
  }
  const AclPresence acl = readAclBytes(folder, name, aclBytes_);
  if (acl == AclPresence::kNotKept) devicesWithoutAcls_.insert(status.device);
  return acl;
}

bool FolderScanner::flush(Take take) {
  if (batch_.isEmpty()) return true;
  const bool goesOn = take(batch_.entries());
  batch_.clear();
  return goesOn;
}

}  // namespace vt
