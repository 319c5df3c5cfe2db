#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"
#include "worker/WorkerMain.h"

namespace vt::worker {

/// What an extraction worker does with each request, which is an ExtractionRequest. Borrows both.
TaskSource extractionTasks(const ContentTypes& types,
                           const std::vector<std::unique_ptr<Extractor>>& extractors);

/// Gives the extractors of a program for a table of types, which they borrow.
using ExtractorSource =
    std::function<std::vector<std::unique_ptr<Extractor>>(const ContentTypes& types)>;

/// What an extraction worker does from its start on: see runWorker(). Its first message is the
/// table of content types; without one it ends.
int runExtractionWorker(int argc, char** argv, const ExtractorSource& extractors,
                        std::chrono::milliseconds fileLimit = kFileLimit);

}  // namespace vt::worker
