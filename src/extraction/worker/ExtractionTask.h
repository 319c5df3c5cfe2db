#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "extraction/rehearsal/RehearsalFile.h"
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

/// Has the extractors look into the files, each by the first that takes its type. What they find
/// or miss in them is of no interest. To be called before walls are raised.
void rehearse(const ContentTypes& types, const std::vector<std::unique_ptr<Extractor>>& extractors,
              const std::vector<RehearsalFile>& files);

/// What an extraction worker does from its start on: see runWorker(). Its first message is the
/// table of content types; without one it ends.
int runExtractionWorker(int argc, char** argv, const ExtractorSource& extractors,
                        const std::vector<RehearsalFile>& rehearsal = {},
                        std::chrono::milliseconds fileLimit = kFileLimit);

}  // namespace vt::worker
