#pragma once

#include <memory>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// The extractors of documents that this build has, but for PDF and HTML. Borrows `types`.
std::vector<std::unique_ptr<Extractor>> documentExtractors(const ContentTypes& types);

}  // namespace vt
