#include "vistaro/WallNames.h"

#include <string_view>

#include "worker/WorkerProtocol.h"

namespace vt::tool {

std::string wallNames(std::uint32_t walls) {
  std::string names;
  const auto add = [&](worker::Wall wall, std::string_view name) {
    if ((walls & wall) == 0) return;
    if (!names.empty()) names += ", ";
    names += name;
  };
  add(worker::kBubblewrap, "bubblewrap");
  add(worker::kLandlock, "Landlock");
  add(worker::kSeccomp, "seccomp");
  return names;
}

}  // namespace vt::tool
