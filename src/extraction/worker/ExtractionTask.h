#pragma once

#include <memory>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"
#include "worker/WorkerMain.h"

namespace vt::worker {

/// What an extraction worker does with each request, which is an ExtractionRequest. Borrows both.
TaskSource extractionTasks(const ContentTypes& types,
                           const std::vector<std::unique_ptr<Extractor>>& extractors);

/// What comes as the first message of a client: the table of content types. Nothing when it does
/// not come, or is none.
std::unique_ptr<const ContentTypes> receiveTypes(int socket);

}  // namespace vt::worker
