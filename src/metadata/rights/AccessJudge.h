#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "metadata/rights/AclReader.h"
#include "metadata/rights/Credentials.h"
#include "metadata/rights/Permissions.h"

namespace vt {

/// Whose a file is and what its mode says, as `stat` gives them.
struct FileOwnership {
  std::uint32_t uid = 0;
  std::uint32_t gid = 0;
  std::uint32_t mode = 0;  ///< permissions and file type

  bool operator==(const FileOwnership&) const = default;
};

/// Whether anybody's verdict on reading the file, or on searching the folder, can depend on an
/// access control list; if not, none need be read. The reasons are those of verdictOfModeAlone().
bool mayAclMatter(std::uint32_t mode);

/// Says what an account may do with a file, as the kernel would say it: the owner by the owner's
/// bits alone; else by the access control list when there is one; else by the group's or the
/// others' bits. Judges one file; the folders above it are judged one by one on the way to it.
class AccessJudge {
 public:
  explicit AccessJudge(Credentials who) : who_(std::move(who)) {}

  const Credentials& who() const { return who_; }

  /// Whether the account gets all of `wanted` on the file. `readTheAcl` is asked only when an
  /// access control list could make a difference; a list that is not known refuses.
  template <class ReadTheAcl>
  bool allows(const FileOwnership& file, Permissions wanted, ReadTheAcl readTheAcl) const {
    if (const std::optional<bool> verdict = verdictOfModeAlone(file, wanted)) return *verdict;
    const AclReading& acl = readTheAcl();
    return acl.isKnown && verdictWithAcl(file, wanted, acl.list);
  }

  /// All that the account gets on a file that has no access control list.
  Permissions grantedByMode(const FileOwnership& file) const;

  /// The verdict when no access control list can change it.
  ///
  /// Where there is a list, the group bits are its mask, which bounds every entry but those of
  /// owner and others. So without group bits there is nothing to ask; nor when neither the group's
  /// bits nor the others' hold what is wanted.
  std::optional<bool> verdictOfModeAlone(const FileOwnership& file, Permissions wanted) const;

 private:
  bool verdictWithAcl(const FileOwnership& file, Permissions wanted,
                      const std::optional<AccessControlList>& list) const;

  Credentials who_;
};

}  // namespace vt
