#pragma once

#include <memory>
#include <string>

#include "metadata/types/ContentTypes.h"
#include "platform/linux/images/LinuxImages.h"
#include "support/Places.h"
#include "support/ReadFile.h"

namespace vt {

/// The worker of this build, with the shipped types and icons.
inline LinuxImages::Setup testImages() {
  auto types = ContentTypes::parse(readFile(resourcePath("types.tsv")));
  return {.iconFolder = resourcePath("icons"),
          .types = std::make_shared<const ContentTypes>(std::move(types).value())};
}

}  // namespace vt
