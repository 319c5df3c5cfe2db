// Looks into PDF documents for the indexer, which starts it and speaks to it over a socket.

#include "extraction/documents/PdfExtractor.h"
#include "extraction/rehearsal/RehearsalFile.h"
#include "extraction/worker/ExtractionTask.h"

int main(int argc, char** argv) {
  return vt::worker::runExtractionWorker(argc, argv, vt::pdfExtractors, vt::rehearsalOfPdf());
}
