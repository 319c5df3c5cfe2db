// Looks into files for the indexer, which starts it and speaks to it over a socket.

#include <unistd.h>

#include "extraction/BuiltInExtractors.h"
#include "extraction/worker/ExtractionTask.h"
#include "worker/WorkerMain.h"

int main(int argc, char** argv) {
  const auto types = vt::worker::receiveTypes(STDIN_FILENO);
  if (!types) return 1;
  const auto extractors = vt::confinedExtractors(*types);
  return vt::worker::runWorker(argc, argv, vt::worker::extractionTasks(*types, extractors));
}
