#include "platform/linux/AccountRecords.h"

#include <limits>
#include <utility>

#include "platform/DirectoryConstants.h"
#include "platform/linux/FilePasswords.h"
#include "platform/linux/PamPasswords.h"

namespace vt {
namespace {

bool isRecordId(std::uint32_t id) { return id <= std::numeric_limits<std::int32_t>::max(); }

void add(DirectoryRecord& record, const char* type, std::vector<std::string> values) {
  std::erase(values, "");
  if (!values.empty()) record.attributes.push_back({type, std::move(values)});
}

std::vector<DirectoryRecord> recordsOf(const std::optional<Account>& account) {
  if (!account || !isRecordId(account->uid) || !isRecordId(account->gid)) return {};
  DirectoryRecord record{kDSStdRecordTypeUsers, account->name, {}};
  add(record, kDSNAttrRecordName, {account->name});
  add(record, kDS1AttrUniqueID, {std::to_string(account->uid)});
  add(record, kDS1AttrPrimaryGroupID, {std::to_string(account->gid)});
  add(record, kDS1AttrDistinguishedName, {account->realName});
  add(record, kDSNAttrMetaNodeLocation, {kDSLocalNodePath});
  return {std::move(record)};
}

std::vector<DirectoryRecord> recordsOf(const std::optional<Group>& group) {
  if (!group || !isRecordId(group->gid)) return {};
  DirectoryRecord record{kDSStdRecordTypeGroups, group->name, {}};
  add(record, kDSNAttrRecordName, {group->name});
  add(record, kDS1AttrPrimaryGroupID, {std::to_string(group->gid)});
  add(record, kDSNAttrGroupMembership, group->members);
  return {std::move(record)};
}

template <class Entry>
std::vector<DirectoryRecord> recordsOf(const std::vector<Entry>& entries) {
  std::vector<DirectoryRecord> records;
  for (const Entry& entry : entries) {
    for (DirectoryRecord& record : recordsOf(std::optional(entry))) {
      records.push_back(std::move(record));
    }
  }
  return records;
}

}  // namespace

AccountRecords::AccountRecords(std::shared_ptr<const Accounts> accounts,
                               std::shared_ptr<const PasswordCheck> passwords,
                               std::shared_ptr<const RecordSource> more)
    : accounts_(std::move(accounts)), passwords_(std::move(passwords)), more_(std::move(more)) {}

std::vector<DirectoryRecord> AccountRecords::records(std::string_view type,
                                                     std::optional<std::string_view> name) const {
  if (type == kDSStdRecordTypeUsers) return users(name);
  if (type == kDSStdRecordTypeGroups) return groups(name);
  return more_ ? more_->records(type, name) : std::vector<DirectoryRecord>();
}

std::vector<DirectoryRecord> AccountRecords::users(std::optional<std::string_view> name) const {
  return name ? recordsOf(accounts_->accountNamed(std::string(*name)))
              : recordsOf(accounts_->allAccounts());
}

std::vector<DirectoryRecord> AccountRecords::groups(std::optional<std::string_view> name) const {
  if (!name) return recordsOf(accounts_->allGroups());
  return recordsOf(groupOrItsStandIn(*accounts_, std::string(*name)));
}

bool AccountRecords::verifyPassword(const std::string& name, const std::string& password) const {
  return passwords_->verify(name, password);
}

std::optional<Group> groupOrItsStandIn(const Accounts& accounts, const std::string& name) {
  constexpr std::string_view kAdministrators = "admin";
  constexpr const char* kAdministratorsElsewhere[] = {"sudo", "wheel"};
  std::optional<Group> group = accounts.groupNamed(name);
  if (group || name != kAdministrators) return group;
  for (const char* elsewhere : kAdministratorsElsewhere) {
    group = accounts.groupNamed(elsewhere);
    if (group) {
      group->name = name;
      return group;
    }
  }
  return std::nullopt;
}

std::shared_ptr<const Accounts> accountsUnder(const std::string& rootPrefix) {
  return hasOwnAccounts(rootPrefix) ? fileAccounts(rootPrefix) : systemAccounts();
}

std::shared_ptr<const PasswordCheck> passwordsUnder(const std::string& rootPrefix) {
  if (hasOwnAccounts(rootPrefix)) return std::make_shared<FilePasswords>(rootPrefix);
  return std::make_shared<PamPasswords>();
}

}  // namespace vt
