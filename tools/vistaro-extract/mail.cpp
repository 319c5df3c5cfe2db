// Looks into mail for the indexer, which starts it and speaks to it over a socket.

#include "extraction/documents/DocumentExtractors.h"
#include "extraction/media/MediaExtractors.h"
#include "extraction/rehearsal/RehearsalFile.h"
#include "extraction/worker/ExtractionTask.h"

int main(int argc, char** argv) {
  const auto extractors = [](const vt::ContentTypes& types) {
    return vt::mailExtractors(types, vt::textOfHtml);
  };
  return vt::worker::runExtractionWorker(argc, argv, extractors, vt::rehearsalOfMail());
}
