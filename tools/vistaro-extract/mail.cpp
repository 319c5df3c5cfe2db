// Looks into mail for the indexer, which starts it and speaks to it over a socket.

#include "extraction/media/MediaExtractors.h"
#include "extraction/rehearsal/RehearsalFile.h"
#include "extraction/worker/ExtractionTask.h"
#ifdef VT_WITH_HTML
#include "extraction/documents/HtmlText.h"
#endif

int main(int argc, char** argv) {
  const auto extractors = [](const vt::ContentTypes& types) {
#ifdef VT_WITH_HTML
    return vt::mailExtractors(types, vt::textOfHtml);
#else
    return vt::mailExtractors(types);
#endif
  };
  return vt::worker::runExtractionWorker(argc, argv, extractors, vt::rehearsalOfMail());
}
