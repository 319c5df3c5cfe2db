#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vt {

/// One account of the system. Texts are bytes as the system keeps them.
struct Account {
  std::string name;
  std::uint32_t uid = 0;
  std::uint32_t gid = 0;  ///< the primary group
  std::string realName;   ///< the first part of the GECOS field; "" when there is none
  std::string home;
  std::string shell;
};

/// One group of the system, with the login names of those that it lists.
struct Group {
  std::string name;
  std::uint32_t gid = 0;
  std::vector<std::string> members;
};

/// The accounts and groups of the system. An entry without a usable numeric id does not exist.
///
/// Every question is put anew, so a change of the system shows in the next answer. Threads may ask
/// at the same time, but for the two lists of everything.
class Accounts {
 public:
  virtual ~Accounts() = default;

  virtual std::optional<Account> accountNamed(const std::string& name) const = 0;
  virtual std::optional<Account> accountWithId(std::uint32_t uid) const = 0;
  virtual std::optional<Group> groupNamed(const std::string& name) const = 0;
  virtual std::vector<Account> allAccounts() const = 0;
  virtual std::vector<Group> allGroups() const = 0;

  /// The ids of all groups of `account`: the primary one first, then, in the system's order, those
  /// that list it, none twice.
  virtual std::vector<std::uint32_t> groupsOf(const Account& account) const = 0;
};

/// The accounts of the name service switch: /etc/passwd and whatever else the machine is told.
std::shared_ptr<const Accounts> systemAccounts();

/// The accounts of the files "etc/passwd" and "etc/group" under the folder `root`. They are read
/// at every question: meant for small tables.
std::shared_ptr<const Accounts> fileAccounts(const std::string& root);

/// Whether the accounts under `rootPrefix` are those of its own files: when it is not empty and
/// holds "etc/passwd". Accounts, groups and passwords then all come from there.
bool hasOwnAccounts(const std::string& rootPrefix);

}  // namespace vt
