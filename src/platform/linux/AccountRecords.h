#pragma once

#include <memory>

#include "platform/DirectoryRecord.h"
#include "platform/linux/Accounts.h"
#include "platform/linux/PasswordCheck.h"

namespace vt {

/// The accounts and groups of the system as directory records.
///
/// A user or group with an id above 2,147,483,647 has no record: the directory's ids are signed.
/// An attribute without a value is left out, so a user without a full name has no RealName. Groups
/// are found by groupOrItsStandIn().
class AccountRecords final : public RecordSource {
 public:
  /// `more` answers for the record types that are no accounts (share points); it may be null.
  AccountRecords(std::shared_ptr<const Accounts> accounts,
                 std::shared_ptr<const PasswordCheck> passwords,
                 std::shared_ptr<const RecordSource> more = nullptr);

  std::vector<DirectoryRecord> records(std::string_view type,
                                       std::optional<std::string_view> name) const override;
  bool verifyPassword(const std::string& name, const std::string& password) const override;

 private:
  std::vector<DirectoryRecord> users(std::optional<std::string_view> name) const;
  std::vector<DirectoryRecord> groups(std::optional<std::string_view> name) const;

  std::shared_ptr<const Accounts> accounts_;
  std::shared_ptr<const PasswordCheck> passwords_;
  std::shared_ptr<const RecordSource> more_;
};

/// The group called `name`. "admin" is, where the system has none of that name, its group "sudo",
/// else "wheel", and is called "admin".
std::optional<Group> groupOrItsStandIn(const Accounts& accounts, const std::string& name);

/// The accounts, and with them the passwords, that hold under `rootPrefix`: its own files, or the
/// name service switch and PAM. Never some of each.
std::shared_ptr<const Accounts> accountsUnder(const std::string& rootPrefix);
std::shared_ptr<const PasswordCheck> passwordsUnder(const std::string& rootPrefix);

}  // namespace vt
