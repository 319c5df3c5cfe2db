#include "search/ItemAccess.h"

#include "directory/VTUser.h"
#include "platform/Identity.h"
#include "platform/Platform.h"

namespace vt {

ItemAccess::ItemAccess(const VTUser* user, const std::string& path) {
  if (!user) return;
  Identity& identity = Platform::current().identity();
  if (identity.geteuid() != 0) {
    isGranted_ = user->accessAllowedToPath(path);
    return;
  }
  acting_.emplace(identity, ActingAccount{user->username(), user->uid(), user->gid()});
  isGranted_ = acting_->isInForce();
}

}  // namespace vt
