#include <fmt/format.h>

#include "worker/WorkerProtocol.h"
#include "platform/Platform.h"
#include "platform/linux/images/LinuxImages.h"
#include "vistaro/Checkup.h"

namespace vt::tool {

std::vector<Diagnosis> checkImages() {
  auto* images = dynamic_cast<LinuxImages*>(&Platform::current().images());
  const std::optional<std::uint32_t> walls = images ? images->walls() : std::nullopt;
  if (!walls) {
    return {{Finding::kNote,
             "thumbnails: files cannot be decoded behind walls here, or the image worker is "
             "missing: every file shows its icon"}};
  }
  std::string names;
  const auto add = [&](worker::Wall wall, std::string_view name) {
    if (*walls & wall) names += fmt::format("{}{}", names.empty() ? "" : ", ", name);
  };
  add(worker::kBubblewrap, "bubblewrap");
  add(worker::kLandlock, "Landlock");
  add(worker::kSeccomp, "seccomp");
  return {{Finding::kOk, fmt::format("thumbnails are made behind {}", names)}};
}

}  // namespace vt::tool
