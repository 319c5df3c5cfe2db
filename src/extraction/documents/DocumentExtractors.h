#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// The extractors of documents that this build has, but for PDF. Borrows `types`.
std::vector<std::unique_ptr<Extractor>> documentExtractors(const ContentTypes& types);

/// The text of a page of HTML, both in UTF-8; "" when this build cannot read it.
std::string textOfHtml(std::string_view page);

}  // namespace vt
