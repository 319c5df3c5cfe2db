#include <algorithm>
#include <filesystem>

#include "platform/linux/AccountFiles.h"
#include "platform/linux/Accounts.h"

namespace vt {
namespace {

bool isName(std::string_view name) {
  // A leading + or - includes another service's entries where that is used: no name.
  return !name.empty() && name.front() != '+' && name.front() != '-';
}

// name:password:uid:gid:gecos:home:shell
std::optional<Account> parseAccount(std::string_view line) {
  const std::vector<std::string_view> fields = accountFields(line);
  if (fields.size() != 7 || !isName(fields[0])) return std::nullopt;
  const std::optional<std::uint32_t> uid = accountId(fields[2]);
  const std::optional<std::uint32_t> gid = accountId(fields[3]);
  if (!uid || !gid) return std::nullopt;
  return Account{std::string(fields[0]),
                 *uid,
                 *gid,
                 std::string(fields[4].substr(0, fields[4].find(','))),
                 std::string(fields[5]),
                 std::string(fields[6])};
}

// name:password:gid:member,member
std::optional<Group> parseGroup(std::string_view line) {
  const std::vector<std::string_view> fields = accountFields(line);
  if (fields.size() != 4 || !isName(fields[0])) return std::nullopt;
  const std::optional<std::uint32_t> gid = accountId(fields[2]);
  if (!gid) return std::nullopt;
  Group group{std::string(fields[0]), *gid, {}};
  for (std::string_view rest = fields[3]; !rest.empty();) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    if (end > 0) group.members.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return group;
}

class FileAccounts final : public Accounts {
 public:
  explicit FileAccounts(const std::string& root)
      : passwdPath_(root + "/etc/passwd"), groupPath_(root + "/etc/group") {}

  std::optional<Account> accountNamed(const std::string& name) const override {
    return first(allAccounts(), [&](const Account& account) { return account.name == name; });
  }
  std::optional<Account> accountWithId(std::uint32_t uid) const override {
    return first(allAccounts(), [&](const Account& account) { return account.uid == uid; });
  }
  std::optional<Group> groupNamed(const std::string& name) const override {
    return first(allGroups(), [&](const Group& group) { return group.name == name; });
  }

  std::vector<Account> allAccounts() const override { return all(passwdPath_, parseAccount); }
  std::vector<Group> allGroups() const override { return all(groupPath_, parseGroup); }

  std::vector<std::uint32_t> groupsOf(const Account& account) const override {
    std::vector<std::uint32_t> ids{account.gid};
    for (const Group& group : allGroups()) {
      const bool listed = std::ranges::find(group.members, account.name) != group.members.end();
      if (listed && std::ranges::find(ids, group.gid) == ids.end()) ids.push_back(group.gid);
    }
    return ids;
  }

 private:
  template <class T>
  static std::vector<T> all(const std::string& path, std::optional<T> (*parse)(std::string_view)) {
    std::vector<T> entries;
    for (const std::string& line : accountFileLines(path)) {
      if (auto entry = parse(line)) entries.push_back(std::move(*entry));
    }
    return entries;
  }

  template <class T, class Predicate>
  static std::optional<T> first(std::vector<T> entries, Predicate matches) {
    const auto found = std::ranges::find_if(entries, matches);
    return found == entries.end() ? std::nullopt : std::optional<T>(std::move(*found));
  }

  std::string passwdPath_;
  std::string groupPath_;
};

}  // namespace

std::shared_ptr<const Accounts> fileAccounts(const std::string& root) {
  return std::make_shared<FileAccounts>(root);
}

bool hasOwnAccounts(const std::string& rootPrefix) {
  std::error_code ignored;
  return !rootPrefix.empty() && std::filesystem::exists(rootPrefix + "/etc/passwd", ignored);
}

}  // namespace vt
