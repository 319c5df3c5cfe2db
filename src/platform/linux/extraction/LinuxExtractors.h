#pragma once

#include <memory>
#include <string>
#include <vector>

#include "metadata/extract/Extractors.h"
#include "metadata/types/ContentTypes.h"
#include "platform/Resources.h"
#include "platform/linux/extraction/ExtractionWorkers.h"

namespace vt {

/// The absolute paths of the worker programs of this installation.
std::vector<std::string> extractionPrograms();

/// The workers of some programs; nullptr when the table of types or that of attributes is damaged.
/// `types` must be that of the resources. Starts nothing.
std::shared_ptr<ExtractionWorkers> extractionWorkers(
    const Resources& resources, const ContentTypes& types,
    std::vector<std::string> programs = extractionPrograms());

/// Everything that looks into files: what the workers (nullptr for none) say of themselves, and for
/// other types the text of plain text. Borrows `types`.
Extractors linuxExtractors(const ContentTypes& types,
                           const std::shared_ptr<ExtractionWorkers>& workers);

}  // namespace vt
