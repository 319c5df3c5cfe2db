#include <fmt/format.h>

#include "platform/Platform.h"
#include "platform/linux/images/LinuxImages.h"
#include "vistaro/Checkup.h"
#include "vistaro/WallNames.h"

namespace vt::tool {

std::vector<Diagnosis> checkImages() {
  auto* images = dynamic_cast<LinuxImages*>(&Platform::current().images());
  const std::optional<std::uint32_t> walls = images ? images->walls() : std::nullopt;
  if (!walls) {
    return {{Finding::kNote,
             "thumbnails: files cannot be decoded behind walls here, or the image worker is "
             "missing: every file shows its icon"}};
  }
  return {{Finding::kOk, fmt::format("thumbnails are made behind {}", wallNames(*walls))}};
}

}  // namespace vt::tool
