// Looks into mail for the indexer, which starts it and speaks to it over a socket.

#include "extraction/documents/DocumentExtractors.h"
#include "extraction/media/MediaExtractors.h"
#include "extraction/worker/ExtractionTask.h"

int main(int argc, char** argv) {
  return vt::worker::runExtractionWorker(argc, argv, [](const vt::ContentTypes& types) {
    return vt::mailExtractors(types, vt::textOfHtml);
  });
}
