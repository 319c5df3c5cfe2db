#include "search/UserIdentityScope.h"

#include "directory/VTUser.h"
#include "platform/Identity.h"
#include "platform/Platform.h"

namespace vt {

UserIdentityScope::UserIdentityScope(const VTUser* user) : user_(user) {
  Identity& identity = Platform::current().identity();
  if (!user_ || identity.geteuid() != 0) return;
  savedUserId_ = identity.geteuid();
  savedGroupId_ = identity.getegid();
  if (*savedUserId_ != user_->uid()) identity.seteuid(user_->uid());
  if (*savedGroupId_ != user_->gid()) identity.setegid(user_->gid());
}

UserIdentityScope::~UserIdentityScope() {
  if (!actsForUser()) return;
  Identity& identity = Platform::current().identity();
  if (identity.geteuid() != *savedUserId_) identity.seteuid(*savedUserId_);
  // The user's group, not the saved one: this is how a search is to leave the process.
  if (identity.getegid() != *savedGroupId_) identity.setegid(user_->gid());
}

}  // namespace vt
