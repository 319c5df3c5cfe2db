// Looks into pictures for the indexer, which starts it and speaks to it over a socket.

#include "extraction/media/MediaExtractors.h"
#include "extraction/rehearsal/RehearsalFile.h"
#include "extraction/worker/ExtractionTask.h"

int main(int argc, char** argv) {
  return vt::worker::runExtractionWorker(argc, argv, vt::pictureExtractors,
                                         vt::rehearsalOfPictures());
}
