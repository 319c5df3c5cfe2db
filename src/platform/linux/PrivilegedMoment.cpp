#include "platform/linux/PrivilegedMoment.h"

#include <cstdlib>

#include "foundation/NSLog.h"
#include "platform/Identity.h"

namespace vt {

PrivilegedMoment::PrivilegedMoment(Identity& identity)
    : identity_(identity),
      uid_(identity.geteuid()),
      isRegained_(uid_ != 0 && identity.seteuid(0) == 0) {}

PrivilegedMoment::~PrivilegedMoment() {
  if (!isRegained_ || identity_.seteuid(uid_) == 0) return;
  NSLog("Unable to return to user %d after looking at files!", uid_);
  std::abort();
}

}  // namespace vt
