#include <errno.h>
#include <grp.h>
#include <pwd.h>

#include <limits>

#include "platform/linux/Accounts.h"

namespace vt {
namespace {

// The last 32-bit number is no id: calls take it for "leave as it is".
constexpr std::uint32_t kNoId = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kFirstBufferSize = 4096;
// A group of some hundred thousand members; what needs more is a fault.
constexpr std::size_t kLargestBufferSize = std::size_t{64} << 20;

/// Calls `look(record, buffer, size, result)`, one of the get…_r functions, with as much buffer as
/// it wants. The record lives in `buffer`; null when there is none.
template <class Entry, class Look>
const Entry* lookUp(Entry& entry, std::vector<char>& buffer, Look look) {
  for (std::size_t size = kFirstBufferSize; size <= kLargestBufferSize; size *= 2) {
    buffer.resize(size);
    Entry* result = nullptr;
    int error = 0;
    do {
      error = look(&entry, buffer.data(), size, &result);
    } while (error == EINTR);
    if (error == 0) return result;
    if (error != ERANGE) return nullptr;
  }
  return nullptr;
}

std::string text(const char* text) { return text ? text : ""; }

std::optional<Account> account(const passwd* entry) {
  if (!entry || entry->pw_uid == kNoId || entry->pw_gid == kNoId) return std::nullopt;
  std::string gecos = text(entry->pw_gecos);
  return Account{text(entry->pw_name), entry->pw_uid,
                 entry->pw_gid,        gecos.substr(0, gecos.find(',')),
                 text(entry->pw_dir),  text(entry->pw_shell)};
}

std::optional<Group> group(const ::group* entry) {
  if (!entry || entry->gr_gid == kNoId) return std::nullopt;
  Group result{text(entry->gr_name), entry->gr_gid, {}};
  for (char** member = entry->gr_mem; member && *member; ++member) {
    result.members.emplace_back(*member);
  }
  return result;
}

bool holdsNul(const std::string& name) { return name.find('\0') != name.npos; }

class NssAccounts final : public Accounts {
 public:
  std::optional<Account> accountNamed(const std::string& name) const override {
    if (holdsNul(name)) return std::nullopt;
    passwd entry{};
    std::vector<char> buffer;
    return account(
        lookUp(entry, buffer, [&](passwd* into, char* bytes, std::size_t size, passwd** result) {
          return getpwnam_r(name.c_str(), into, bytes, size, result);
        }));
  }

  std::optional<Account> accountWithId(std::uint32_t uid) const override {
    if (uid == kNoId) return std::nullopt;
    passwd entry{};
    std::vector<char> buffer;
    return account(
        lookUp(entry, buffer, [&](passwd* into, char* bytes, std::size_t size, passwd** result) {
          return getpwuid_r(uid, into, bytes, size, result);
        }));
  }

  std::optional<Group> groupNamed(const std::string& name) const override {
    if (holdsNul(name)) return std::nullopt;
    ::group entry{};
    std::vector<char> buffer;
    return group(
        lookUp(entry, buffer, [&](::group* into, char* bytes, std::size_t size, ::group** result) {
          return getgrnam_r(name.c_str(), into, bytes, size, result);
        }));
  }

  std::vector<Account> allAccounts() const override {
    std::vector<Account> all;
    std::vector<char> buffer;
    setpwent();
    passwd entry{};
    while (const passwd* found = lookUp(entry, buffer, getpwent_r)) {
      if (auto one = account(found)) all.push_back(std::move(*one));
    }
    endpwent();
    return all;
  }

  std::vector<Group> allGroups() const override {
    std::vector<Group> all;
    std::vector<char> buffer;
    setgrent();
    ::group entry{};
    while (const ::group* found = lookUp(entry, buffer, getgrent_r)) {
      if (auto one = group(found)) all.push_back(std::move(*one));
    }
    endgrent();
    return all;
  }

  std::vector<std::uint32_t> groupsOf(const Account& account) const override {
    std::vector<gid_t> groups(64);
    int count = static_cast<int>(groups.size());
    // -1 says that there was no room; the count is then what is needed, or grows by ourselves.
    while (getgrouplist(account.name.c_str(), account.gid, groups.data(), &count) < 0) {
      const std::size_t needed =
          std::max<std::size_t>(static_cast<std::size_t>(count), groups.size() * 2);
      if (needed > kLargestBufferSize) return {account.gid};
      groups.resize(needed);
      count = static_cast<int>(needed);
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
  }
};

}  // namespace

std::shared_ptr<const Accounts> systemAccounts() { return std::make_shared<NssAccounts>(); }

}  // namespace vt
