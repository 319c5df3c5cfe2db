#pragma once

#include <memory>

#include "metadata/types/ContentTypes.h"
#include "platform/Resources.h"

namespace vt {

/// The shipped content types; nullptr when "types.tsv" is missing or damaged.
std::shared_ptr<const ContentTypes> contentTypesIn(const Resources& resources);

}  // namespace vt
