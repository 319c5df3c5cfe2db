#pragma once

#include <memory>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// The extractors that this build has for files that are looked into behind walls, the first of
/// those that take a type being the one for it. Borrows `types`.
std::vector<std::unique_ptr<Extractor>> confinedExtractors(const ContentTypes& types);

}  // namespace vt
