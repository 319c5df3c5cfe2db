#pragma once

#include <memory>
#include <optional>

#include "images/ImageFormat.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// What a file of the type is to be taken for; nothing for a type without thumbnails.
std::optional<ImageFormat> formatOf(const ContentTypes& types, ContentTypeId type);

}  // namespace vt
