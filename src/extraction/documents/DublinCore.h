#pragma once

#include <string_view>

#include "extraction/FoundAttributes.h"

namespace vt {

/// Takes what an element of a document's metadata says, by the names that office documents and
/// books share: "title", "subject", "description", "language", "publisher", "rights" and the like.
/// False for any other name.
bool takeDublinCore(std::string_view name, std::string_view text, FoundAttributes& attributes);

}  // namespace vt
