#include "platform/ActingAs.h"

#include <cstdlib>
#include <limits>

#include "foundation/NSLog.h"
#include "platform/Identity.h"

namespace vt {

ActingAs::ActingAs(Identity& identity, const ActingAccount& account)
    : identity_(identity),
      uid_(identity.geteuid()),
      gid_(identity.getegid()),
      groups_(identity.getgroups()),
      isInForce_(false) {
  // An id that is none must not be cut down to one that is.
  if (account.gid >= std::numeric_limits<std::uint32_t>::max()) return;
  const auto gid = static_cast<std::uint32_t>(account.gid);
  isInForce_ = takeOn(account, identity.groupsOf(account.name, gid));
  if (!isInForce_) giveBack();
}

ActingAs::~ActingAs() {
  if (isInForce_) giveBack();
}

bool ActingAs::takeOn(const ActingAccount& account,
                      const std::vector<std::uint32_t>& groups) noexcept {
  // The user last, whose rights do not suffice for the rest.
  return identity_.setgroups(groups) == 0 && identity_.setegid(account.gid) == 0 &&
         identity_.seteuid(account.uid) == 0;
}

void ActingAs::giveBack() noexcept {
  // What was never changed is left alone: a system that refuses the way there refuses the way back.
  if (identity_.seteuid(uid_) == 0 &&
      (identity_.getegid() == gid_ || identity_.setegid(gid_) == 0) &&
      (identity_.getgroups() == groups_ || identity_.setgroups(groups_) == 0)) {
    return;
  }
  NSLog("Unable to return to user %d after acting as another!", uid_);
  std::abort();
}

}  // namespace vt
