#include "vistaro/OnBehalf.h"

#include <fmt/format.h>

#include "platform/Identity.h"
#include "platform/Platform.h"
#include "vistaro/CommandError.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

std::shared_ptr<VTUser> userOnBehalf(const std::optional<std::string>& name,
                                     std::string_view deed) {
  if (!name) return nullptr;
  std::shared_ptr<VTUser> user = VTUser::userWithName(*name);
  if (!user) {
    throw CommandError{kUsage, fmt::format("no user is called \"{}\"", printable(*name))};
  }
  const std::uint32_t self = Platform::current().identity().geteuid();
  if (self != 0 && self != user->uid()) {
    throw CommandError{kFailure, fmt::format("only root can {} on behalf of somebody else", deed)};
  }
  return user;
}

}  // namespace vt::tool
